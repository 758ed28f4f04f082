#pragma once
// The main window: a tab strip of five pages over one session. Short handlers run on the window's
// thread; a download or a statistic-file pass runs on a worker thread while the pages' controls are
// locked, and the window repaints from the copies of the state the run reports.
#include <QMainWindow>
#include <array>
#include <atomic>
#include <thread>

#include "core/state/session.h"
#include "gui/page.h"
#include "gui/state_observer.h"

class QLabel;
class QMessageBox;
class QPushButton;
class QTabWidget;

namespace corvanet::gui {

class ChartPage;

class MainWindow final : public QMainWindow, public PageHost {
  Q_OBJECT

 public:
  explicit MainWindow(Session& session, QWidget* parent = nullptr);
  ~MainWindow() override;

  // Shows the state on every page, the tab strip, the title and the status line.
  void Render(const WindowState& state);

  void Handle(const Handler& handler) override;
  void HandleOnWorker(Handler handler) override;
  void StartRun(Handler handler) override;
  void FetchMasterfileIfMissing() override;
  Session* IdleSession() override { return running_ ? nullptr : &session_; }
  void ExitClicked(int page) override;

  // Asks the run to stop after the datafile in hand; the run ends by itself and says so.
  void RequestStop();
  // The unattended start: runs list RunListNum, which shows no message box, and closes the window
  // when it has ended (unless a picture of the end is wanted: `close_at_end` false).
  void StartUnattendedRun(bool close_at_end = true);

  bool running() const { return running_; }
  QTabWidget* tabs() const { return tabs_; }
  ChartPage* chart() const { return chart_; }
  StateObserver& observer() { return observer_; }

 signals:
  // A worker run ended and the window shows its final state.
  void WorkFinished();

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  void StartWork(Handler handler, bool stoppable);
  void FinishWork();
  void SetPagesLocked(bool locked);
  // Asks, without waiting, whether to stop the run and close; the question goes with the run.
  void AskToCloseDuringRun();
  // The status line: the state's StatusText, or what the work in hand means for the user.
  void ShowStatus();

  Session& session_;
  StateObserver* previous_observer_;
  const std::atomic<bool>* previous_stop_;
  QueuedStateObserver observer_;
  QTabWidget* tabs_;
  std::array<Page*, kTabCount> pages_{};
  ChartPage* chart_;  // a tab after the window's own, outside WindowState's tabs
  QLabel* version_;
  QLabel* status_;
  QPushButton* stop_;
  std::string shown_status_;  // StatusText of the state rendered last
  std::thread worker_;
  std::atomic<bool> stop_requested_{false};
  bool running_ = false;
  bool stoppable_ = false;        // the work in hand is a download, which stops between datafiles
  bool close_after_run_ = false;  // the user closed the window during the run and it is stopping
  bool close_confirmed_ = false;  // an Exit button already asked the closing question
  bool close_at_end_ = false;     // an unattended run: the window closes when it ends
  QMessageBox* close_question_ = nullptr;  // open while the user decides whether to close
  int shown_tab_ = -1;                     // the CurrentTab last brought to the front
};

}  // namespace corvanet::gui
