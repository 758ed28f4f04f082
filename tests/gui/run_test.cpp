// Runs from the window against the demo service: what the window says when a run succeeds or
// fails, what it offers while a run goes on, and closing it during a run.
#include <QCheckBox>
#include <QLabel>
#include <QRadioButton>
#include <QTabWidget>
#include <atomic>

#include "gui/run_outcome_view.h"
#include "gui_service_fixture.h"

namespace corvanet::test {
namespace {

// List 1 holds two indexes, daily, and the log-in is saved; the master list is fetched by then.
class GuiRun : public GuiServiceTest {
 protected:
  void SetUp() override {
    SaveLogInAndListOne({"$NYA", "$XAX"});
    ASSERT_EQ(session_.ui.List6.size(), 2u);
  }

  gui::RunOutcomeView* Outcome() { return Find<gui::RunOutcomeView>("RunSummaryFrame"); }

  // Starts a run whose first datafile the service delays, and returns while it is being fetched.
  // (The service logs a request only once it is answered, so the log cannot tell.)
  void StartSlowRun(int delay_ms) {
    service.SetFaults({"*/NYSEDaily-CompositeStats.csv delay " + std::to_string(delay_ms)});
    Click("DownLoadButton");
    // The caption counts one ahead of the datafiles started.
    auto* button = Find<QPushButton>("DownLoadButton");
    ASSERT_TRUE(ProcessUntil([button] { return button->text().contains("Datafile 2 of 2"); }));
  }

  // Every summary line of the core is in the window, under the heading.
  void ExpectSummaryShown() {
    const QString shown = Outcome()->text();
    EXPECT_TRUE(shown.startsWith(QString::fromStdString(session_.ui.RunOutcome.caption)))
        << shown.toStdString();
    ASSERT_FALSE(session_.ui.RunSummaryLines.empty());
    for (const std::string& line : session_.ui.RunSummaryLines) {
      EXPECT_NE(shown.indexOf(QString::fromStdString(line)), -1) << line;
    }
  }
};

TEST_F(GuiRun, EveryOutcomeIsShownAndAFailureIsMarkedAsOne) {
  struct Case {
    const char* what;
    std::function<void()> arrange;
    bool failed;
    const char* heading;
  };
  const Case cases[] = {
      {"the service answers", [] {}, false, "Complete: "},
      {"a wrong password",
       [this] {
         TypeOver("Password", "not the password");
         Click("SaveToINI");
       },
       true, "FAILED: "},
      {"a stopped service", [this] { service.Stop(); }, true, "FAILED: "},
  };
  window_->show();
  window_->tabs()->setCurrentIndex(kDownloadTab);
  auto* button = Find<QPushButton>("DownLoadButton");
  QApplication::processEvents();
  const QPoint button_at = button->mapTo(window_.get(), QPoint(0, 0));
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    c.arrange();
    Click("DownloadList1");
    EXPECT_EQ(Outcome()->text().toStdString(), WindowState().RunOutcome.caption);
    messages.clear();
    RunAndWait();
    EXPECT_EQ(session_.ui.RunFailed, c.failed);
    EXPECT_EQ(Outcome()->failed(), c.failed);
    EXPECT_EQ(session_.ui.RunOutcome.caption.rfind(c.heading, 0), 0u)
        << session_.ui.RunOutcome.caption;
    ExpectSummaryShown();
    // However long the summary, the download button stays where it was.
    QApplication::processEvents();
    EXPECT_EQ(button->mapTo(window_.get(), QPoint(0, 0)), button_at);
    // The completion message stays as it was, failure or not.
    ASSERT_FALSE(messages.empty());
    EXPECT_NE(messages.back().request.text.find("Update for Download List 1 completed on "),
              std::string::npos);
  }
  // What was said about list 1 is not shown for list 2.
  Click("DownloadList2");
  EXPECT_FALSE(Outcome()->failed());
  EXPECT_EQ(Outcome()->text().toStdString(), WindowState().RunOutcome.caption);
}

TEST_F(GuiRun, DuringARunOnlyStopAndWhatShowsTheRunAreLive) {
  StartSlowRun(2000);
  ASSERT_TRUE(window_->running());
  for (const char* name :
       {"DownloadList2", "DownloadList7", "Exit3", "LoadConfiguration", "SaveToINI", "UserName",
        "Text5", "DownLoadButton", "CheckForUpdates", "SetUpOverview", "Exit4"}) {
    EXPECT_FALSE(Find<QWidget>(name)->isEnabled()) << name;
  }
  // The run has repainted the window by now; that must not unlock anything (the tab strip
  // enables its pages on every render).
  EXPECT_FALSE(Find<QWidget>("DownloadList2")->isEnabled());
  for (const char* name : {"Label13", "ProgressBar1", "RunSummaryFrame", "WebBrowser2"}) {
    EXPECT_TRUE(Find<QWidget>(name)->isEnabled()) << name;
  }
  EXPECT_FALSE(Find<QWidget>("StopRun")->isHidden());
  EXPECT_NE(Find<QLabel>("StatusText")->text().indexOf("pages are locked"), -1);

  ASSERT_TRUE(ProcessUntil([this] { return !window_->running(); }, std::chrono::seconds(30)));
  EXPECT_TRUE(Find<QWidget>("DownloadList2")->isEnabled());
  EXPECT_TRUE(Find<QWidget>("StopRun")->isHidden());
}

TEST_F(GuiRun, ClosingDuringARunAsksThenStopsBetweenDatafilesAndCloses) {
  window_->show();
  StartSlowRun(1500);
  messages.clear();

  answers = {Answer::kNo};  // keep the run going
  window_->close();
  EXPECT_TRUE(window_->isVisible());
  EXPECT_TRUE(window_->running());

  answers = {Answer::kYes, Answer::kNo};  // stop and close; then do not save the settings
  window_->close();
  ASSERT_TRUE(ProcessUntil([this] { return !window_->isVisible(); }, std::chrono::seconds(30)));
  ASSERT_GE(messages.size(), 3u);
  EXPECT_EQ(messages[0].request.text,
            "A download is running.\nStop it after the datafile in hand and close Corvanet?");
  EXPECT_EQ(messages[1].request.text, messages[0].request.text);
  EXPECT_EQ(messages.back().request.title, "Save Dialog");
  EXPECT_FALSE(window_->running());
  // The datafile in hand was finished; the next one, perhaps already fetched ahead, was never
  // written.
  EXPECT_TRUE(Exists(session_.ui.PathToDataFiles + "Daily/$NYA.csv"));
  EXPECT_FALSE(Exists(session_.ui.PathToDataFiles + "Daily/$XAX.csv"));
  EXPECT_EQ(session_.ui.RunOutcome.caption.rfind("STOPPED: ", 0), 0u);
  EXPECT_TRUE(session_.ui.RunFailed);
}

}  // namespace
}  // namespace corvanet::test
