// Runs from the window against the demo service: what the window says when a run succeeds or
// fails, what it offers while a run goes on, and closing it during a run.
#include <QCheckBox>
#include <QLabel>
#include <QListWidget>
#include <QMessageBox>
#include <QRadioButton>
#include <QTabWidget>
#include <algorithm>
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
    auto* button = Find<QPushButton>("DownLoadButton");
    // The caption counts the datafile in hand: the first, of two.
    ASSERT_TRUE(ProcessUntil([button] { return button->text().contains("Datafile 1 of 2"); }));
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
    const char* ended;   // in the completion box
    const char* button;  // the download button's caption at the end
  };
  // After the first run the update file is kept, so a run the service refuses or never answers
  // still merges from it: the one failure is the update file itself.
  const Case cases[] = {
      {"the service answers", [] {}, false,
       "Complete: ", "Update for Download List 1 completed on ",
       "Update Download List 1 Complete! ... (Elapsed time:  "},
      {"a wrong password",
       [this] {
         TypeOver("Password", "not the password");
         Click("SaveToINI");
       },
       true, "FAILED: ", "Update for Download List 1 finished with 1 failure(s) on ",
       "Update Download List 1 Finished With 1 Failure(s) ... (Elapsed time:  "},
      {"a stopped service", [this] { service.Stop(); }, true,
       "FAILED: ", "Update for Download List 1 finished with 1 failure(s) on ",
       "Update Download List 1 Finished With 1 Failure(s) ... (Elapsed time:  "},
  };
  // What the result panel shows while the completion box is up.
  QString shown_under_box;
  on_message = [&](const gui::MessageRequest& request) {
    if (request.title.rfind("Corvanet Download", 0) == 0) shown_under_box = Outcome()->text();
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
    // The completion box says how the run went, and so does the button.
    ASSERT_FALSE(messages.empty());
    const gui::MessageRequest& box = messages.back().request;
    EXPECT_TRUE(Contains(box.text, c.ended)) << box.text;
    EXPECT_EQ(box.icon, c.failed ? Icon::kExclamation : Icon::kInformation);
    EXPECT_EQ(box.title,
              c.failed ? "Corvanet Download Not Complete" : "Corvanet Download Complete");
    EXPECT_TRUE(button->text().startsWith(c.button)) << button->text().toStdString();
    // Under the box the panel already shows this run, and only this run.
    EXPECT_TRUE(shown_under_box.startsWith(QString::fromStdString(session_.ui.RunOutcome.caption)))
        << shown_under_box.toStdString();
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

// The question closing asks during a run; it waits for no one, so the run goes on under it.
QMessageBox* CloseQuestion(QWidget* window) {
  return window->findChild<QMessageBox*>("CloseDuringRun");
}

void Reply(QMessageBox* question, QMessageBox::StandardButton answer) {
  ASSERT_NE(question, nullptr);
  EXPECT_EQ(question->text(),
            "A download is running.\nStop it after the datafile in hand and close Corvanet?");
  question->button(answer)->click();
}

TEST_F(GuiRun, ClosingDuringARunAsksThenStopsBetweenDatafilesAndCloses) {
  window_->show();
  StartSlowRun(1500);
  messages.clear();

  window_->close();
  Reply(CloseQuestion(window_.get()), QMessageBox::No);  // keep the run going
  EXPECT_TRUE(window_->isVisible());
  EXPECT_TRUE(window_->running());

  answers = {Answer::kNo};  // then do not save the settings
  window_->close();
  Reply(CloseQuestion(window_.get()), QMessageBox::Yes);  // stop and close
  ASSERT_TRUE(ProcessUntil([this] { return !window_->isVisible(); }, std::chrono::seconds(30)));
  ASSERT_GE(messages.size(), 2u);
  // The stop is told as one, not as a completion.
  EXPECT_TRUE(Contains(messages[0].request.text, "Update for Download List 1 stopped on "))
      << messages[0].request.text;
  EXPECT_EQ(messages[0].request.icon, Icon::kExclamation);
  EXPECT_TRUE(session_.ui.DownLoadButton.caption.starts_with("Update Download List 1 Stopped ..."));
  EXPECT_EQ(messages.back().request.title, "Save Dialog");
  EXPECT_FALSE(window_->running());
  // The datafile in hand was finished, and so was the next one, whose file was already arriving
  // when the stop landed: nothing fetched is thrown away.
  EXPECT_TRUE(Exists(session_.ui.PathToDataFiles + "Daily/$NYA.csv"));
  EXPECT_TRUE(Exists(session_.ui.PathToDataFiles + "Daily/$XAX.csv"));
  EXPECT_EQ(session_.ui.RunOutcome.caption.rfind("STOPPED: ", 0), 0u);
  EXPECT_TRUE(session_.ui.RunFailed);
}

TEST_F(GuiRun, NeitherAReloadNorTheListCheckLeavesTheBoxAndTheFileApart) {
  auto* box = Find<QListWidget>("List6");
  // A symbol the master list no longer holds: the list check at the end of a run removes it from
  // the file, and the box shows the file.
  const std::string list_file = session_.ui.PathToLists + "Download1.csv";
  WriteFile(list_file, ReadFile(list_file) + "Gone Index,$GONE\r\n");
  Click("DownloadList1");
  ASSERT_EQ(box->count(), 3);
  RunAndWait();
  EXPECT_FALSE(Contains(ReadFile(list_file), "$GONE"));
  ASSERT_EQ(box->count(), 2);
  EXPECT_TRUE(box->findItems("$GONE", Qt::MatchContains).isEmpty());

  // Reloading the saved settings shows the list as its file holds it, and the next run runs it
  // rather than saving an empty box over the file.
  Click("LoadConfiguration");
  ASSERT_TRUE(WaitUntilIdle());
  EXPECT_EQ(box->count(), 2);
  RunAndWait();
  EXPECT_EQ(session_.ui.RunOutcome.caption.rfind("Complete: ", 0), 0u);
  EXPECT_TRUE(Contains(ReadFile(list_file), "$XAX"));
  const std::vector<std::string>& lines = session_.ui.RunSummaryLines;
  EXPECT_NE(std::find(lines.begin(), lines.end(), "Datafiles updated by merge: 2"), lines.end())
      << testing::PrintToString(lines);
}

}  // namespace
}  // namespace corvanet::test
