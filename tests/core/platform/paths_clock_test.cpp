#include <gtest/gtest.h>

#include "core/platform/clock.h"
#include "core/platform/paths.h"

namespace corvanet {
namespace {

TEST(BaseDirectoryTest, CutAfterTheSecondBackslash) {
  EXPECT_EQ(BaseDirectoryFromProgramFolder(R"(D:\Apps\Tools\X)"), R"(D:\Apps\)");
  EXPECT_EQ(BaseDirectoryFromProgramFolder(R"(C:\Tessaly\Rondex)"), R"(C:\Tessaly\)");
  EXPECT_EQ(BaseDirectoryFromProgramFolder(R"(C:\Tessaly)"), R"(C:\Tessaly\)");
  // Fewer than two backslashes keep the whole folder.
  EXPECT_EQ(BaseDirectoryFromProgramFolder("D:"), R"(D:\)");
  EXPECT_EQ(BaseDirectoryFromProgramFolder(""), R"(\)");
}

TEST(IsSafeFileNamePartTest, RefusesWhatCouldLeaveTheFolder) {
  for (const char* safe : {"$INDU", "NYSE", "$NYA.X", "A-B_C", "x", "a.b.c"}) {
    EXPECT_TRUE(IsSafeFileNamePart(safe)) << safe;
  }
  for (const char* unsafe :
       {"", "..", "a/b", "a\\b", "../x", "x..", "tab\there", "bell\a", "del\x7f"}) {
    EXPECT_FALSE(IsSafeFileNamePart(unsafe)) << unsafe;
  }
  EXPECT_FALSE(IsSafeFileNamePart(std::string_view("nul\0byte", 8)));
}

TEST(ClockTextTest, ElapsedTimeSwitchesToMinutesAboveOneMinute) {
  EXPECT_EQ(ElapsedText(0), "0.00 Seconds");
  EXPECT_EQ(ElapsedText(12.345), "12.35 Seconds");
  EXPECT_EQ(ElapsedText(60), "60.00 Seconds");
  EXPECT_EQ(ElapsedText(61), "1.02 Minutes");
  EXPECT_EQ(ElapsedText(90), "1.50 Minutes");
  EXPECT_EQ(ElapsedText(123456), "2,057.60 Minutes");
  EXPECT_EQ(FormatThousands2(1234567.891), "1,234,567.89");
  EXPECT_EQ(FormatThousands2(999.999), "1,000.00");
  EXPECT_EQ(FormatThousands2(-1234.5), "-1,234.50");
}

TEST(ClockTextTest, TimeAndDateForms) {
  LocalDateTime t;
  t.year = 2026;
  t.month = 3;
  t.day = 7;
  const struct {
    int hour, minute, second;
    const char* am_pm;
    const char* time_of_day;
  } cases[] = {
      {0, 5, 9, "12:05:09 AM", "00:05:09"},
      {9, 30, 0, "9:30:00 AM", "09:30:00"},
      {12, 0, 1, "12:00:01 PM", "12:00:01"},
      {23, 59, 59, "11:59:59 PM", "23:59:59"},
  };
  for (const auto& c : cases) {
    t.hour = c.hour;
    t.minute = c.minute;
    t.second = c.second;
    EXPECT_EQ(FormatClockAmPm(t), c.am_pm);
    EXPECT_EQ(FormatTimeOfDay(t), c.time_of_day);
  }
  EXPECT_EQ(FormatShortDate(t), "2026-03-07");
}

}  // namespace
}  // namespace corvanet
