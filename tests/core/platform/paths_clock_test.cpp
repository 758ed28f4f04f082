#include <gtest/gtest.h>

#include "core/platform/clock.h"
#include "core/platform/paths.h"

namespace corvanet {
namespace {

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

// The Windows installation root: the first two levels of the program's folder, wherever the
// installer put it.
TEST(BaseDirectoryFromProgramFolderTest, KeepsTheFirstTwoLevels) {
  struct Case {
    const char* program_folder;
    const char* base;
  } const cases[] = {
      {"C:\\Tessaly\\Rondex", "C:\\Tessaly\\"},
      {"D:\\Apps\\Tools\\X", "D:\\Apps\\"},
      {"E:\\My Apps & Co\\Rondex", "E:\\My Apps & Co\\"},
      {"C:\\Rondex", "C:\\Rondex\\"},  // fewer than two levels: the whole folder
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.program_folder);
    EXPECT_EQ(BaseDirectoryFromProgramFolder(c.program_folder), c.base);
  }
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
  // A run's start as its caption shows it: noon and midnight are twelve o'clock.
  EXPECT_EQ(FormatClockAmPm({2026, 11, 23, 14, 5, 9}), "2:05:09 PM");
  EXPECT_EQ(FormatClockAmPm({2026, 11, 23, 12, 0, 0}), "12:00:00 PM");
  EXPECT_EQ(FormatClockAmPm({2026, 11, 23, 0, 30, 0}), "12:30:00 AM");
}

}  // namespace
}  // namespace corvanet
