#pragma once
// Dates of the generated data: whole days counted from 1970-01-01, weekdays only, and the rule
// that closes a weekly, monthly or quarterly bar on the last weekday of its period.
#include <string>

namespace corvanet::demo {

enum class Period { kDaily = 0, kWeekly = 1, kMonthly = 2, kQuarterly = 3 };
inline constexpr Period kPeriods[] = {Period::kDaily, Period::kWeekly, Period::kMonthly,
                                      Period::kQuarterly};
inline constexpr int kPeriodCount = 4;

// "Daily", "Weekly", ... as used in the service's file names.
const char* PeriodName(Period period);
// 'D', 'W', 'M', 'Q': the first field of a datafile row.
char PeriodLetter(Period period);

struct CivilDate {
  int year = 1970;
  int month = 1;
  int day = 1;
};

int DaysFromCivil(CivilDate date);
CivilDate CivilFromDays(int days);
// 0 = Monday ... 6 = Sunday.
int Weekday(int days);
bool IsWeekday(int days);
// The first weekday after `days`.
int NextWeekday(int days);
// The first weekday on or after `days`.
int WeekdayOnOrAfter(int days);
// The date as the number YYYYMMDD.
int DateNumber(int days);
// True when the bar of `days` is the last weekday of its week, month or quarter, so the period's
// bar is complete once this day's bar is in. Always true for daily bars.
bool EndsPeriod(Period period, int days);
// The same for all periods at once: bit p is set when `days` ends period p.
unsigned EndedPeriods(int days);

}  // namespace corvanet::demo
