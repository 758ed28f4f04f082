#include "gui/main_window.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalBlocker>
#include <QStatusBar>
#include <QTabWidget>

#include "core/app/first_masterfile.h"
#include "core/app/run_outcome.h"
#include "core/app/startup.h"
#include "gui/chart_page.h"

namespace corvanet::gui {

namespace {

// Below this the pages scroll; the window itself never gets so small that the tab strip and the
// status line cannot be read.
constexpr int kMinimumWidth = 640;
constexpr int kMinimumHeight = 480;

}  // namespace

MainWindow::MainWindow(Session& session, QWidget* parent)
    : QMainWindow(parent),
      session_(session),
      previous_observer_(session.observer),
      previous_stop_(session.stop_requested),
      observer_([this](const WindowState& state) { Render(state); }),
      tabs_(new QTabWidget),
      version_(new QLabel),
      status_(new QLabel),
      stop_(new QPushButton("Stop")) {
  tabs_->setObjectName("SSTab1");
  pages_ = {MakeIntroductionPage(*this), MakeSetupPage(*this), MakeGeneralPage(*this),
            MakeDownloadPage(*this), MakeSpecialPage(*this)};
  for (Page* page : pages_) tabs_->addTab(page, QString());
  chart_ = AddChartPage(*this, *tabs_, session_.app.ProgramDirectory);
  connect(tabs_, &QTabWidget::currentChanged, this, [this](int index) {
    Session* idle = IdleSession();
    if (idle != nullptr && index < kTabCount) idle->ui.CurrentTab = index;
  });
  setCentralWidget(tabs_);
  status_->setObjectName("StatusText");
  status_->setTextFormat(Qt::PlainText);
  statusBar()->addWidget(status_, 1);
  stop_->setObjectName("StopRun");
  stop_->setToolTip("Stops the download after the datafile in hand; what was written stays.");
  stop_->hide();
  connect(stop_, &QPushButton::clicked, this, [this] { RequestStop(); });
  statusBar()->addPermanentWidget(stop_);
  version_->setObjectName("DisplayVersionNum");
  statusBar()->addPermanentWidget(version_);
  session_.observer = &observer_;
  session_.stop_requested = &stop_requested_;
  setMinimumSize(kMinimumWidth, kMinimumHeight);
  resize(1180, 800);
  Render(session_.ui);
}

MainWindow::~MainWindow() {
  // A run still going (the window is being torn down by force) may be waiting for an answer on
  // this thread, so keep serving events until it has ended; it stops at the next datafile.
  stop_requested_ = true;
  while (running_) QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
  session_.observer = previous_observer_;
  session_.stop_requested = previous_stop_;
}

void MainWindow::Render(const WindowState& state) {
  setWindowTitle(QString::fromStdString(state.WindowTitle));
  ShowView(version_, state.DisplayVersionNum);
  shown_status_ = state.StatusText;
  ShowStatus();
  const QSignalBlocker blocker(tabs_);
  for (int i = 0; i < kTabCount; ++i) {
    const ControlView& tab = state.Tabs[static_cast<std::size_t>(i)];
    // Tab captions carry their accelerators ("I&ntroduction").
    tabs_->setTabText(i, QString::fromStdString(tab.caption));
    tabs_->setTabVisible(i, tab.visible);
    tabs_->setTabEnabled(i, tab.enabled);
  }
  // Only a change of CurrentTab brings a page forward; otherwise the user's choice stands.
  if (state.CurrentTab != shown_tab_ && tabs_->isTabVisible(state.CurrentTab)) {
    tabs_->setCurrentIndex(state.CurrentTab);
  }
  shown_tab_ = state.CurrentTab;
  for (Page* page : pages_) page->Render(state);
  chart_->Render(state);
}

void MainWindow::ShowStatus() {
  QString text = QString::fromStdString(shown_status_);
  if (running_ && (stop_requested_ || close_after_run_)) {
    if (!stoppable_) {
      text = "Corvanet closes when it has finished.";
    } else {
      text = close_after_run_ ? "Stopping after the datafile in hand; Corvanet then closes."
                              : "Stopping after the datafile in hand ...";
    }
  } else if (running_ && text.isEmpty()) {
    text = stoppable_ ? "A download is running: the pages are locked until it ends. Stop ends it "
                        "after the datafile in hand."
                      : "Corvanet is working: the pages are locked until it has finished.";
  }
  if (status_->text() != text) status_->setText(text);
}

void MainWindow::Handle(const Handler& handler) {
  if (running_) return;
  // A status line tells of the last thing done; the next click makes it old news.
  session_.ui.StatusText.clear();
  handler(session_);
  Render(session_.ui);
}

void MainWindow::HandleOnWorker(Handler handler) {
  StartWork(std::move(handler), false);
}

void MainWindow::StartRun(Handler handler) {
  StartWork(std::move(handler), true);
}

void MainWindow::FetchMasterfileIfMissing() {
  if (!running_ && MasterfileMissing(session_)) HandleOnWorker(&FetchMasterfile);
}

void MainWindow::StartWork(Handler handler, bool stoppable) {
  if (running_) return;
  session_.ui.StatusText.clear();
  shown_status_.clear();
  running_ = true;
  stoppable_ = stoppable;
  stop_requested_ = false;
  SetPagesLocked(true);
  stop_->setEnabled(true);
  stop_->setVisible(stoppable);
  ShowStatus();
  worker_ = std::thread([this, handler = std::move(handler)] {
    handler(session_);
    // Queued behind the run's last reports, so the final state is painted last.
    QMetaObject::invokeMethod(
        this, [this] { FinishWork(); }, Qt::QueuedConnection);
  });
}

void MainWindow::StartUnattendedRun(bool close_at_end) {
  close_at_end_ = close_at_end;
  StartRun([](Session& s) { AutomatedRunAndShowOutcome(s); });
}

void MainWindow::FinishWork() {
  worker_.join();
  running_ = false;
  stop_->hide();
  // A question about the run it has outlived would be answered about nothing: it goes with it.
  if (close_question_ != nullptr) close_question_->done(QMessageBox::No);
  SetPagesLocked(false);
  Render(session_.ui);
  emit WorkFinished();
  if (close_at_end_) {
    close();
    return;
  }
  if (close_after_run_) {
    // The closing question of an idle window comes next; its Cancel keeps the window open.
    close_after_run_ = false;
    close();
  }
}

void MainWindow::RequestStop() {
  if (!running_) return;
  stop_requested_ = true;
  stop_->setEnabled(false);
  ShowStatus();
}

void MainWindow::SetPagesLocked(bool locked) {
  for (Page* page : pages_) page->SetLocked(locked);
}

void MainWindow::ExitClicked(int page) {
  if (running_) return;
  const bool stay_open = Exit_Click(session_, page);
  Render(session_.ui);
  if (stay_open) return;
  close_confirmed_ = true;
  close();
}

void MainWindow::AskToCloseDuringRun() {
  const char* question =
      stoppable_ ? "A download is running.\nStop it after the datafile in hand and close Corvanet?"
                 : "Corvanet is still working.\nClose Corvanet as soon as it has finished?";
  close_question_ = new QMessageBox(QMessageBox::Question,
                                    QString::fromUtf8(kDefaultTitle.data(), kDefaultTitle.size()),
                                    question, QMessageBox::Yes | QMessageBox::No, this);
  close_question_->setObjectName("CloseDuringRun");
  close_question_->setAttribute(Qt::WA_DeleteOnClose);
  // Not exec(): the run goes on meanwhile, and may end before the answer.
  connect(close_question_, &QMessageBox::finished, this, [this](int answer) {
    close_question_ = nullptr;
    if (answer != QMessageBox::Yes || !running_) return;
    close_after_run_ = true;
    if (stoppable_) RequestStop();
    ShowStatus();
  });
  close_question_->open();
}

void MainWindow::closeEvent(QCloseEvent* event) {
  if (running_) {
    // The run holds the session: the window closes once it has stopped. Only the shell is used
    // here; the session's state belongs to the run until it ends.
    event->ignore();
    if (!close_after_run_ && close_question_ == nullptr) AskToCloseDuringRun();
    return;
  }
  if (!close_confirmed_ && Form_Unload(session_)) {
    event->ignore();
    return;
  }
  close_confirmed_ = true;
  event->accept();
}

}  // namespace corvanet::gui
