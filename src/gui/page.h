#pragma once
// What a page of the window needs from the window, and what the window needs from a page.
#include <QWidget>
#include <functional>

#include "core/app/session.h"
#include "gui/bindings.h"

namespace corvanet::gui {

class PageHost {
 public:
  virtual ~PageHost() = default;
  // Runs a handler over the session on the window's thread, then renders every page from the
  // session. Ignored while a run holds the session on the worker (the controls are disabled then).
  virtual void Handle(const Handler& handler) = 0;
  // Runs a long handler (a download, the statistic files) on the worker thread with the controls
  // disabled; pages are repainted from the run's reports and once more at its end.
  virtual void HandleOnWorker(Handler handler) = 0;
  // The session when no run holds it, for edits that need no repaint (a list box's selection).
  virtual Session* IdleSession() = 0;
  // The pages' Exit buttons (1-4).
  virtual void ExitClicked(int page) = 0;
};

class Page : public QWidget {
 public:
  explicit Page(PageHost& host) : host_(host), bind_(host) {}
  // Shows the state: every control's value, caption, visibility and emphasis.
  virtual void Render(const WindowState& state) = 0;

 protected:
  PageHost& host_;
  Bindings bind_;
};

// The five pages, in tab order.
Page* MakeIntroductionPage(PageHost& host);
Page* MakeSetupPage(PageHost& host);
Page* MakeGeneralPage(PageHost& host);
Page* MakeDownloadPage(PageHost& host);
Page* MakeSpecialPage(PageHost& host);

}  // namespace corvanet::gui
