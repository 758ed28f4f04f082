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
  EXPECT_NE(t.shell.boxes[0].text.find("has not written its log yet"), std::string::npos);
  WriteFile(s.app.ProgramDirectory + "MSXlog.txt", "x");
  Help_Click(s);
  EXPECT_EQ(t.shell.opened, (std::vector<std::string>{s.app.ProgramDirectory + "MSXlog.txt"}));

  OpenMetaStock_Click(s);
  EXPECT_EQ(t.shell.programs, (std::vector<std::string>{"Mswin"}));
  EXPECT_NE(t.shell.boxes.back().text.find("no program named \"Mswin\""), std::string::npos);

  // The sample datafiles are laid out again when missing, offered, and the chosen one opened.
  std::filesystem::remove_all(SampleDataFolder(s));
  t.shell.chosen_file = "$INDU.csv";
  OpenSampleDirectory_Click(s);
  EXPECT_EQ(t.shell.opened.back(), SampleDataFolder(s) + "$INDU.csv");
  EXPECT_GT(ReadLines(SampleDataFolder(s) + "$INDU.csv").size(), 50U);

  GoToURL(s, "http://example.invalid/");
  EXPECT_EQ(t.shell.opened.back(), "http://example.invalid/");
}

TEST(OutsideProgramsTest, TheShortcutIsADesktopEntryThatReplacesAnOldOne) {
  TestSession t;
  const std::string desktop = t.base("Desktop/");
  ::setenv("XDG_DESKTOP_DIR", desktop.c_str(), 1);
  EXPECT_FALSE(CreateShortcut_Click(t.session)) << "no desktop folder";
  EXPECT_EQ(t.shell.boxes.size(), 1U);
  WriteFile(desktop + "Palvery.desktop", "old");
  EXPECT_TRUE(CreateShortcut_Click(t.session));
  const std::string entry = ReadFile(desktop + "Palvery.desktop");
  ::unsetenv("XDG_DESKTOP_DIR");
  EXPECT_EQ(entry.rfind("[Desktop Entry]\nType=Application\nName=Corvanet\n", 0), 0U) << entry;
  EXPECT_NE(entry.find("\nExec=\""), std::string::npos);
  EXPECT_NE(entry.find("corvanet\"\n"), std::string::npos);
  EXPECT_EQ(entry.find('\r'), std::string::npos);
}

}  // namespace
}  // namespace corvanet::test
