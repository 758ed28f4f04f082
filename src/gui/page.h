#pragma once
// What a page of the window needs from the window, and what the window needs from a page.
#include <QWidget>
#include <functional>
#include <vector>

class QGroupBox;
class QLabel;
class QLayout;
class QPushButton;
class QScrollArea;

#include "core/state/session.h"
#include "gui/bindings.h"

namespace corvanet::gui {

class PageHost {
 public:
  virtual ~PageHost() = default;
  // Runs a handler over the session on the window's thread, then renders every page from the
  // session. Ignored while a run holds the session on the worker (the controls are disabled then).
  virtual void Handle(const Handler& handler) = 0;
  // Runs a long handler (a fetch, the statistic files) on the worker thread with the controls
  // disabled; pages are repainted from the run's reports and once more at its end.
  virtual void HandleOnWorker(Handler handler) = 0;
  // The same for a download, which the user can stop between datafiles.
  virtual void StartRun(Handler handler) = 0;
  // After a save: a new user's master list is fetched as soon as the log-in is saved.
  virtual void FetchMasterfileIfMissing() = 0;
  // The session when no run holds it, for edits that need no repaint (a list box's selection).
  virtual Session* IdleSession() = 0;
  // The pages' Exit buttons (1-4).
  virtual void ExitClicked(int page) = 0;
};

// A note beside controls, wrapped to the width it is given.
QLabel* Note(const QString& text);
// A titled frame around `content`, named for the tests and the style sheet.
QGroupBox* Group(const char* name, const QString& title, QLayout* content);

// The "Exit" buttons that carry the caption and no action (Exit6, Delete1, Delete2): shown as they
// always were, but disabled, so no one expects them to close the window.
QPushButton* InertExitButton(const char* name);

// A page lays its controls out in content(), which scrolls when the window is smaller than they
// need, so nothing is clipped or overlaps at any window size.
class Page : public QWidget {
 public:
  explicit Page(PageHost& host);
  // Shows the state: every control's value, caption, visibility and emphasis.
  virtual void Render(const WindowState& state) = 0;
  // During a run nothing on a page can act, so its controls are disabled rather than left to look
  // live and drop clicks; what only shows the run stays as it is.
  void SetLocked(bool locked);

 protected:
  QWidget* content() const { return content_; }
  // The parts SetLocked disables; the whole content unless a page names its parts.
  void LockOnly(std::vector<QWidget*> parts) { lockable_ = std::move(parts); }
  // Scrolls the page so the widget is in view when the window is too small to show all of it.
  void ShowWhole(QWidget* widget);

  PageHost& host_;
  Bindings bind_;

 private:
  QScrollArea* scroll_;
  QWidget* content_;
  std::vector<QWidget*> lockable_;
};

// The five pages, in tab order.
Page* MakeIntroductionPage(PageHost& host);
Page* MakeSetupPage(PageHost& host);
Page* MakeGeneralPage(PageHost& host);
Page* MakeDownloadPage(PageHost& host);
Page* MakeSpecialPage(PageHost& host);

}  // namespace corvanet::gui
