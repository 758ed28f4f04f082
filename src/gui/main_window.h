#pragma once
// The main window: a tab strip of five pages over one session. Short handlers run on the window's
// thread; a download or a statistic-file pass runs on a worker thread while the controls are
// disabled, and the window repaints from the copies of the state the run reports.
#include <QMainWindow>
#include <array>
#include <thread>

#include "core/app/session.h"
#include "gui/page.h"
#include "gui/state_observer.h"

class QLabel;
class QTabWidget;

namespace corvanet::gui {

class MainWindow final : public QMainWindow, public PageHost {
  Q_OBJECT

 public:
  explicit MainWindow(Session& session, QWidget* parent = nullptr);
  ~MainWindow() override;

  // Shows the state on every page, the tab strip and the title.
  void Render(const WindowState& state);

  void Handle(const Handler& handler) override;
  void HandleOnWorker(Handler handler) override;
  Session* IdleSession() override { return running_ ? nullptr : &session_; }
  void ExitClicked(int page) override;

  bool running() const { return running_; }
  QTabWidget* tabs() const { return tabs_; }
  StateObserver& observer() { return observer_; }

 signals:
  // A worker run ended and the window shows its final state.
  void WorkFinished();

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  void FinishWork();
  void SetPagesEnabled(bool enabled);

  Session& session_;
  StateObserver* previous_observer_;
  QueuedStateObserver observer_;
  QTabWidget* tabs_;
  std::array<Page*, kTabCount> pages_{};
  QLabel* version_;
  std::thread worker_;
  bool running_ = false;
  bool close_confirmed_ = false;  // an Exit button already asked the closing question
  int shown_tab_ = -1;            // the CurrentTab last brought to the front
};

}  // namespace corvanet::gui
