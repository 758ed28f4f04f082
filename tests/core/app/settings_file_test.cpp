#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>
#include <vector>

#include "core/app/settings.h"
#include "support/test_session.h"

namespace corvanet::test {
namespace {

using W = WindowState;

const std::string kRetryMessage =
    "Please enter a whole numerical value.\rRetry number will now be reset to the default value.";

// Gives every control of the table a value other than its design state, straight into the window
// state (no handlers), as a user's long session would leave it.
void GiveEveryControlAValue(Session& s) {
  const W design;
  for (const SettingDef& def : SettingsTable()) {
    const std::string key(def.key);
    if (const auto* check = std::get_if<int W::*>(&def.control)) {
      s.ui.** check = 1;
    } else if (const auto* option = std::get_if<bool W::*>(&def.control)) {
      s.ui.** option = !(design.**option);
    } else if (const auto* text = std::get_if<std::string W::*>(&def.control)) {
      s.ui.** text =
          def.form == SettingForm::kPath ? s.app.BaseDirectory + "p-" + key + "/" : "v-" + key;
    }
  }
  s.ui.RetryNumber = "7";
  s.ui.Stat2File3 = "v-Stat2File3";
}

// A session in design state over the same installation.
Session FreshSession(TestSession& t) {
  Session fresh(t.shell, t.http, t.clock);
  fresh.app = t.session.app;
  return fresh;
}

std::string SettingsFile(TestSession& t) {
  return SettingsFilePath(t.session);
}

// The keys whose control differs between the two sessions.
std::vector<std::string> DifferingKeys(const Session& a, const Session& b) {
  std::vector<std::string> keys;
  for (const SettingDef& def : SettingsTable()) {
    if (DisplayValue(a, def) != DisplayValue(b, def)) keys.emplace_back(def.key);
  }
  return keys;
}

TEST(SettingsFileTest, SavedSettingsReadBackIntoEveryControl) {
  TestSession t;
  GiveEveryControlAValue(t.session);
  SaveToINI_Click(t.session);
  EXPECT_TRUE(t.shell.boxes.empty());

  Session fresh = FreshSession(t);
  LoadINI(fresh);
  EXPECT_EQ(DifferingKeys(t.session, fresh), std::vector<std::string>{});
  EXPECT_EQ(fresh.ui.Stat2File3, "Select One");  // never stored
  EXPECT_EQ(fresh.ui.GenerateLogFile, 0);        // not stored either
  EXPECT_TRUE(t.shell.boxes.empty());
}

// Paths inside the installation are stored relative to it; any other path as it stands, so that
// every path reads back as saved.
TEST(SettingsFileTest, PathsReadBackAsSavedInsideTheInstallationOrNot) {
  TestSession t;
  Session& s = t.session;
  const std::size_t base_length = s.app.BaseDirectory.size();
  const std::string elsewhere = "/elsewhere/" + std::string(base_length, 'x') + "/Data/";
  s.ui.PathToDataFiles = elsewhere;
  s.ui.PathToMSPxFiles = "/short/";
  s.ui.PathToLists = s.app.BaseDirectory + "My, Lists/";
  SaveToINI_Click(s);
  const std::vector<std::string> lines = ReadLines(SettingsFile(t));
  EXPECT_EQ(lines[2], "PathToDataFiles," + elsewhere);
  EXPECT_EQ(lines[3], "PathToLists,\"My, Lists/\"");
  EXPECT_EQ(lines[5], "PathToMSPxFiles,/short/");

  Session fresh = FreshSession(t);
  LoadINI(fresh);
  EXPECT_EQ(fresh.ui.PathToDataFiles, elsewhere);
  EXPECT_EQ(fresh.ui.PathToMSPxFiles, "/short/");
  EXPECT_EQ(fresh.ui.PathToLists, s.ui.PathToLists);
}

}  // namespace
}  // namespace corvanet::test
