#pragma once
// Carries the window state from a run on the worker thread to the window. The core reports at every
// pause; the state is copied under a lock and one repaint is queued to the window's thread. Reports
// that arrive before that repaint ran only replace the copy, so a fast run cannot flood the queue.
#include <QObject>
#include <functional>
#include <mutex>

#include "core/state/session.h"

namespace corvanet::gui {

class QueuedStateObserver final : public QObject, public StateObserver {
  Q_OBJECT

 public:
  using Renderer = std::function<void(const WindowState&)>;
  // `render` runs on the thread this object lives on (the window's).
  explicit QueuedStateObserver(Renderer render, QObject* parent = nullptr);

  // Any thread; reports from the window's own thread are left to the window's render.
  void StateChanged(const WindowState& state) override;

 private:
  void Deliver();

  Renderer render_;
  std::mutex mutex_;
  WindowState latest_;            // guarded by mutex_
  bool delivery_queued_ = false;  // guarded by mutex_
  WindowState delivered_;         // the window thread's own copy, rendered outside the lock
};

}  // namespace corvanet::gui
