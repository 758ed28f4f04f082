#include "core/platform/deferred_release.h"

#ifndef _WIN32
#include <unistd.h>
#endif

namespace corvanet {

namespace {
// Old copies held at once: enough to ride out a burst of small datafiles, few enough that the disk
// space they keep stays a handful of datafiles.
constexpr std::size_t kMostHeld = 16;

void CloseHandle(int handle) {
#ifndef _WIN32
  ::close(handle);
#else
  (void)handle;
#endif
}
}  // namespace

DeferredRelease::~DeferredRelease() {
  {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  changed_.notify_all();
  if (thread_.joinable()) thread_.join();
  for (const int handle : waiting_) CloseHandle(handle);
}

void DeferredRelease::Release(int handle) {
  if (handle < 0) return;
  std::unique_lock lock(mutex_);
  if (!thread_.joinable()) thread_ = std::thread([this] { Run(); });
  // A full queue waits for the releasing thread rather than holding ever more old copies.
  changed_.wait(lock, [this] { return waiting_.size() < kMostHeld; });
  waiting_.push_back(handle);
  lock.unlock();
  changed_.notify_all();
}

void DeferredRelease::Run() {
  std::unique_lock lock(mutex_);
  for (;;) {
    changed_.wait(lock, [this] { return stopping_ || !waiting_.empty(); });
    if (waiting_.empty()) return;
    const int handle = waiting_.back();
    waiting_.pop_back();
    lock.unlock();
    changed_.notify_all();
    CloseHandle(handle);
    lock.lock();
  }
}

}  // namespace corvanet
