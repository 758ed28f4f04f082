#include "core/platform/clock.h"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <ctime>

namespace corvanet {

namespace {
std::tm LocalTm(std::time_t t) {
  std::tm tm{};
#ifdef _WIN32
  localtime_s(&tm, &t);
#else
  localtime_r(&t, &tm);
#endif
  return tm;
}
}  // namespace

double SystemClock::Timer() {
  const auto now = std::chrono::system_clock::now();
  const std::time_t t = std::chrono::system_clock::to_time_t(now);
  const std::tm tm = LocalTm(t);
  const auto fraction =
      std::chrono::duration<double>(now - std::chrono::system_clock::from_time_t(t)).count();
  return tm.tm_hour * 3600.0 + tm.tm_min * 60.0 + tm.tm_sec + fraction;
}

LocalDateTime SystemClock::Now() {
  const std::tm tm = LocalTm(std::time(nullptr));
  return {tm.tm_year + 1900, tm.tm_mon + 1, tm.tm_mday, tm.tm_hour, tm.tm_min, tm.tm_sec};
}

std::string FormatTimeOfDay(const LocalDateTime& t) {
  char text[16];
  std::snprintf(text, sizeof text, "%02d:%02d:%02d", t.hour, t.minute, t.second);
  return text;
}

std::string FormatShortDate(const LocalDateTime& t) {
  char text[16];
  std::snprintf(text, sizeof text, "%04d-%02d-%02d", t.year, t.month, t.day);
  return text;
}

std::string FormatFileStamp(const LocalDateTime& t) {
  char text[32];
  std::snprintf(text, sizeof text, "%04d%02d%02d-%02d%02d%02d", t.year, t.month, t.day, t.hour,
                t.minute, t.second);
  return text;
}

std::string FormatClockAmPm(const LocalDateTime& t) {
  const int hour12 = t.hour % 12 == 0 ? 12 : t.hour % 12;
  char text[24];
  std::snprintf(text, sizeof text, "%d:%02d:%02d %s", hour12, t.minute, t.second,
                t.hour < 12 ? "AM" : "PM");
  return text;
}

std::string FormatThousands2(double value) {
  const bool negative = value < 0;
  const auto cents = static_cast<long long>(std::llround(std::fabs(value) * 100.0));
  const std::string digits = std::to_string(cents / 100);
  std::string text = negative ? "-" : "";
  for (std::size_t i = 0; i < digits.size(); ++i) {
    if (i > 0 && (digits.size() - i) % 3 == 0) text += ',';
    text += digits[i];
  }
  char fraction[4];
  std::snprintf(fraction, sizeof fraction, "%02lld", cents % 100);
  text += '.';
  text += fraction;
  return text;
}

std::string ElapsedText(double seconds) {
  if (seconds / 60.0 > 1.0) return FormatThousands2(seconds / 60.0) + " Minutes";
  return FormatThousands2(seconds) + " Seconds";
}

}  // namespace corvanet
