#pragma once
// When a rename replaces a file, the kernel frees the old file's pages and blocks as soon as its
// last reference goes, and for a datafile that costs about as much as writing it. A run replaces
// thousands of datafiles one after the other: holding each old copy open across the rename and
// closing it on a thread of its own lets that freeing overlap the next datafile's work.
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

namespace corvanet {

class DeferredRelease {
 public:
  DeferredRelease() = default;
  // Closes whatever is still held.
  ~DeferredRelease();
  DeferredRelease(const DeferredRelease&) = delete;
  DeferredRelease& operator=(const DeferredRelease&) = delete;

  // Lets go of an open descriptor of a file a rename has just replaced, on the releasing thread;
  // a negative one is ignored.
  void Release(int handle);

 private:
  void Run();

  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<int> waiting_;
  bool stopping_ = false;
  std::thread thread_;  // started with the first release
};

}  // namespace corvanet
