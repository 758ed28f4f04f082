#pragma once
// Objects whose buffers are worth keeping from one call to the next, lent to one caller at a time:
// a run handles thousands of datafiles, and freeing a reader's or writer's buffers after each and
// allocating them again for the next made the heap shrink and grow back every time.
//
// Not thread_local objects: in the Windows build (mingw-w64, whose thread-local storage is
// emulated), a thread's end frees the storage of such an object before its destructor runs, which
// then works on freed memory. A pool holds as many objects as callers ever used it at once.
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace corvanet {

template <typename T>
class ReusePool {
 public:
  // One object, lent until the lease ends.
  class Lease {
   public:
    Lease(ReusePool& pool, std::unique_ptr<T> item) : pool_(pool), item_(std::move(item)) {}
    Lease(const Lease&) = delete;
    Lease& operator=(const Lease&) = delete;
    ~Lease() { pool_.Return(std::move(item_)); }
    T& operator*() const { return *item_; }
    T* operator->() const { return item_.get(); }

   private:
    ReusePool& pool_;
    std::unique_ptr<T> item_;
  };

  // An object another caller gave back, or a new one when none is idle.
  Lease Take() {
    std::unique_ptr<T> item;
    {
      const std::lock_guard lock(mutex_);
      if (!idle_.empty()) {
        item = std::move(idle_.back());
        idle_.pop_back();
      }
    }
    if (!item) item = std::make_unique<T>();
    return Lease(*this, std::move(item));
  }

 private:
  void Return(std::unique_ptr<T> item) {
    const std::lock_guard lock(mutex_);
    idle_.push_back(std::move(item));
  }

  std::mutex mutex_;
  std::vector<std::unique_ptr<T>> idle_;
};

}  // namespace corvanet
