#include "demo_service/calendar.h"

namespace corvanet::demo {

const char* PeriodName(Period period) {
  switch (period) {
    case Period::kDaily:
      return "Daily";
    case Period::kWeekly:
      return "Weekly";
    case Period::kMonthly:
      return "Monthly";
    case Period::kQuarterly:
      return "Quarterly";
  }
  return "";
}

char PeriodLetter(Period period) {
  return PeriodName(period)[0];
}

// Howard Hinnant's civil-calendar algorithms: exact for every Gregorian date, no tables.
int DaysFromCivil(CivilDate date) {
  const int y = date.year - (date.month <= 2 ? 1 : 0);
  const int era = (y >= 0 ? y : y - 399) / 400;
  const int yoe = y - era * 400;
  const int mp = (date.month + 9) % 12;
  const int doy = (153 * mp + 2) / 5 + date.day - 1;
  const int doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + doe - 719468;
}

CivilDate CivilFromDays(int days) {
  const int z = days + 719468;
  const int era = (z >= 0 ? z : z - 146096) / 146097;
  const int doe = z - era * 146097;
  const int yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const int doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const int mp = (5 * doy + 2) / 153;
  CivilDate date;
  date.day = doy - (153 * mp + 2) / 5 + 1;
  date.month = mp < 10 ? mp + 3 : mp - 9;
  date.year = yoe + era * 400 + (date.month <= 2 ? 1 : 0);
  return date;
}

int Weekday(int days) {
  // 1970-01-01 was a Thursday (3 when Monday is 0).
  const int w = (days + 3) % 7;
  return w < 0 ? w + 7 : w;
}

bool IsWeekday(int days) {
  return Weekday(days) < 5;
}

int NextWeekday(int days) {
  return WeekdayOnOrAfter(days + 1);
}

int WeekdayOnOrAfter(int days) {
  while (!IsWeekday(days)) ++days;
  return days;
}

int DateNumber(int days) {
  const CivilDate date = CivilFromDays(days);
  return date.year * 10000 + date.month * 100 + date.day;
}

bool EndsPeriod(Period period, int days) {
  return (EndedPeriods(days) & (1u << static_cast<unsigned>(period))) != 0;
}

unsigned EndedPeriods(int days) {
  const int next = NextWeekday(days);
  const CivilDate today = CivilFromDays(days);
  const CivilDate then = CivilFromDays(next);
  unsigned ended = 1u << static_cast<unsigned>(Period::kDaily);
  if (next - days > 1) ended |= 1u << static_cast<unsigned>(Period::kWeekly);  // a weekend between
  if (today.month != then.month) ended |= 1u << static_cast<unsigned>(Period::kMonthly);
  if ((today.month - 1) / 3 != (then.month - 1) / 3) {
    ended |= 1u << static_cast<unsigned>(Period::kQuarterly);
  }
  return ended;
}

}  // namespace corvanet::demo
