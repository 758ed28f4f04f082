#include "core/app/startup.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>
#include <vector>

#include "core/app/settings.h"
#include "core/platform/files.h"
#include "core/state/log.h"
#include "support/recording_shell.h"
#include "support/test_support.h"

namespace corvanet::test {
namespace {

// A data service that is never there; it remembers what was asked of it.
class NoService final : public HttpClient {
 public:
  FetchResult FetchToFile(const FetchRequest& request, const std::string&) override {
    urls.push_back(request.url);
    FetchResult result;
    result.status = FetchStatus::kCouldNotConnect;
    return result;
  }
  std::vector<std::string> urls;
};

// A program about to start: nothing installed yet under base(), RunListNum.txt (if any) in start().
struct Start {
  Start() { CreateFolders(start()); }
  std::string base() const { return dir / "Tessaly/"; }
  std::string start() const { return dir / "start/"; }
  StartupOptions options() const {
    StartupOptions o;
    o.base_directory = dir / "Tessaly";  // the trailing separator is added
    o.start_directory = dir / "start";   // the separator is added
    o.change_directory = false;
    return o;
  }

  TempDir dir;
  ScriptedShell shell;
  NoService http;
  ManualClock clock;
  Session session{shell, http, clock};
};

class FormUnloadTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(Form_Load(p.session, p.options()));
    RemoveFile(settings());
    p.session.ui.UserName = "abc";
    p.session.ui.Password = "pw";
    p.session.ui.GenerateLogFile = 1;
  }
  std::string settings() const { return p.session.app.ProgramDirectory + "Rondex.ini"; }
  std::string log() const { return ReadFile(LogFilePath(p.session)); }

  Start p;
};

TEST_F(FormUnloadTest, TheAnswerDecidesSavingAndClosing) {
  const struct {
    Answer answer;
    bool stays_open;
    std::size_t lines;
    const char* logged;
  } cases[] = {{Answer::kYes, false, 91, "Settings saved"},
               {Answer::kNo, false, 0, "Settings not saved"},
               {Answer::kCancel, true, 0, "Exit canceled"}};
  for (const auto& c : cases) {
    RemoveFile(settings());
    p.shell.Reset();
    p.shell.answers = {c.answer};
    EXPECT_EQ(Form_Unload(p.session), c.stays_open) << c.logged;
    EXPECT_EQ(p.shell.boxes[0].text, "Save Corvanet settings before closing?");
    EXPECT_EQ(p.shell.boxes[0].buttons, Buttons::kYesNoCancel);
    EXPECT_EQ(p.shell.boxes.size(), c.answer == Answer::kYes ? 2U : 1U) << c.logged;
    EXPECT_EQ(Exists(settings()) ? ReadLines(settings()).size() : 0U, c.lines) << c.logged;
    EXPECT_TRUE(Contains(log(), std::string(" - Form_Unload - ") + c.logged + "\r\n"));
  }
  EXPECT_EQ(p.shell.boxes.size(), 1U);
}

}  // namespace
}  // namespace corvanet::test
