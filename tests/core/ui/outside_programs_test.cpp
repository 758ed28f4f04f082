#include "core/ui/outside_programs.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "support/test_session.h"

namespace corvanet::test {
namespace {

TEST(OutsideProgramsTest, OpenWhatTheUserAsksForOrSayWhyNot) {
  TestSession t;
  Session& s = t.session;
  Help_Click(s);  // the converter has not run yet
  ASSERT_EQ(t.shell.boxes.size(), 1U);
  EXPECT_TRUE(Contains(t.shell.boxes[0].text, "has not written its log yet"));
  WriteFile(s.app.ProgramDirectory + "MSXlog.txt", "x");
  Help_Click(s);
  EXPECT_EQ(t.shell.opened, (std::vector<std::string>{s.app.ProgramDirectory + "MSXlog.txt"}));

  OpenMetaStock_Click(s);
  EXPECT_EQ(t.shell.programs, (std::vector<std::string>{"Mswin"}));
  EXPECT_TRUE(Contains(t.shell.boxes.back().text, "no program named \"Mswin\""));

  // The sample datafiles are laid out again when missing, offered, and the chosen one opened.
  std::filesystem::remove_all(SampleDataFolder(s));
  t.shell.chosen_file = "$INDU.csv";
  OpenSampleDirectory_Click(s);
  EXPECT_EQ(t.shell.opened.back(), SampleDataFolder(s) + "$INDU.csv");
  EXPECT_GT(ReadLines(SampleDataFolder(s) + "$INDU.csv").size(), 50U);

  GoToURL(s, "http://example.invalid/");
  EXPECT_EQ(t.shell.opened.back(), "http://example.invalid/");
}

}  // namespace
}  // namespace corvanet::test
