#pragma once
// The clock is injected so tests and run summaries can fix or measure time.
#include <string>

namespace corvanet {

struct LocalDateTime {
  int year = 2000, month = 1, day = 1;
  int hour = 0, minute = 0, second = 0;
};

class Clock {
 public:
  virtual ~Clock() = default;
  // Seconds since midnight, with fractions (the classic timer).
  virtual double Timer() = 0;
  virtual LocalDateTime Now() = 0;
};

class SystemClock final : public Clock {
 public:
  double Timer() override;
  LocalDateTime Now() override;
};

// A clock the tests set by hand.
class ManualClock final : public Clock {
 public:
  double Timer() override { return timer; }
  LocalDateTime Now() override { return now; }
  double timer = 0;
  // A day after every row of the tests' data: a merge refuses rows dated after tomorrow.
  LocalDateTime now{.year = 2026, .month = 11, .day = 23};
};

// "14:05:09": the time of day of log lines (a fixed 24-hour form).
std::string FormatTimeOfDay(const LocalDateTime& t);
// "2026-11-23": the short date of the settings report and messages (a fixed form).
std::string FormatShortDate(const LocalDateTime& t);
// "20261123-140509": a time in a file name, which sorts as the times do.
std::string FormatFileStamp(const LocalDateTime& t);
// "2:05:09 PM": the "h:mm:ss AMPM" form of the run captions.
std::string FormatClockAmPm(const LocalDateTime& t);
// "###,##0.00" of the elapsed-time texts: 1234.5 -> "1,234.50".
std::string FormatThousands2(double value);
// The elapsed text of a run: minutes when seconds / 60 is above 1, else seconds.
std::string ElapsedText(double seconds);

}  // namespace corvanet
