#include "gui/main_window.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QLabel>
#include <QSignalBlocker>
#include <QStatusBar>
#include <QTabWidget>

#include "core/app/startup.h"

namespace corvanet::gui {

MainWindow::MainWindow(Session& session, QWidget* parent)
    : QMainWindow(parent),
      session_(session),
      previous_observer_(session.observer),
      observer_([this](const WindowState& state) { Render(state); }),
      tabs_(new QTabWidget),
      version_(new QLabel) {
  tabs_->setObjectName("SSTab1");
  pages_ = {MakeIntroductionPage(*this), MakeSetupPage(*this), MakeGeneralPage(*this),
            MakeDownloadPage(*this), MakeSpecialPage(*this)};
  for (Page* page : pages_) tabs_->addTab(page, QString());
  connect(tabs_, &QTabWidget::currentChanged, this, [this](int index) {
    if (Session* idle = IdleSession()) idle->ui.CurrentTab = index;
  });
  setCentralWidget(tabs_);
  version_->setObjectName("DisplayVersionNum");
  statusBar()->addPermanentWidget(version_);
  session_.observer = &observer_;
  resize(1180, 800);
  Render(session_.ui);
}

MainWindow::~MainWindow() {
  // A run still going (the window is being torn down by force) may be waiting for an answer on
  // this thread, so keep serving events until it has ended.
  while (running_) QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
  session_.observer = previous_observer_;
}

void MainWindow::Render(const WindowState& state) {
  setWindowTitle(QString::fromStdString(state.WindowTitle));
  ShowView(version_, state.DisplayVersionNum);
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
}

void MainWindow::Handle(const Handler& handler) {
  if (running_) return;
  handler(session_);
  Render(session_.ui);
}

void MainWindow::HandleOnWorker(Handler handler) {
  if (running_) return;
  running_ = true;
  SetPagesEnabled(false);
  worker_ = std::thread([this, handler = std::move(handler)] {
    handler(session_);
    // Queued behind the run's last reports, so the final state is painted last.
    QMetaObject::invokeMethod(
        this, [this] { FinishWork(); }, Qt::QueuedConnection);
  });
}

void MainWindow::FinishWork() {
  worker_.join();
  running_ = false;
  SetPagesEnabled(true);
  Render(session_.ui);
  emit WorkFinished();
}

void MainWindow::SetPagesEnabled(bool enabled) {
  for (Page* page : pages_) page->setEnabled(enabled);
}

void MainWindow::ExitClicked(int page) {
  if (running_) return;
  const bool stay_open = Exit_Click(session_, page);
  Render(session_.ui);
  if (stay_open) return;
  close_confirmed_ = true;
  close();
}

void MainWindow::closeEvent(QCloseEvent* event) {
  // A run holds the session; the window closes once the run has ended.
  if (running_) {
    event->ignore();
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
