#include "gui/state_observer.h"

#include <QThread>

namespace corvanet::gui {

QueuedStateObserver::QueuedStateObserver(Renderer render, QObject* parent)
    : QObject(parent), render_(std::move(render)) {}

void QueuedStateObserver::StateChanged(const WindowState& state) {
  // A handler the window runs on its own thread is rendered as soon as it returns; a copy queued
  // now would be painted after that and show an older state.
  if (QThread::currentThread() == thread()) return;
  {
    std::lock_guard lock(mutex_);
    latest_ = state;
    if (delivery_queued_) return;
    delivery_queued_ = true;
  }
  QMetaObject::invokeMethod(
      this, [this] { Deliver(); }, Qt::QueuedConnection);
}

void QueuedStateObserver::Deliver() {
  {
    std::lock_guard lock(mutex_);
    // Copy-assignment reuses the strings' storage, so steady repaints allocate little.
    delivered_ = latest_;
    delivery_queued_ = false;
  }
  // Rendered outside the lock: the worker never waits for a repaint.
  render_(delivered_);
}

}  // namespace corvanet::gui
