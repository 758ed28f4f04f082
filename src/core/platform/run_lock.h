#pragma once
// One run at a time per installation: a lock file in the program folder that a run holds for its
// whole length. The kernel drops the lock when the process ends, however it ends, so a killed run
// never blocks the next one.
#include <string>

namespace corvanet {

class RunLock {
 public:
  RunLock() = default;
  RunLock(const RunLock&) = delete;
  RunLock& operator=(const RunLock&) = delete;
  ~RunLock() { Release(); }

  // Takes the lock in `folder` (the program folder) and notes this process and `started` (the
  // time of day, "18:02:11") in it. False when another process holds it; holder() then says who.
  bool Acquire(const std::string& folder, const std::string& started);
  // The same, but true at once when this process holds the lock already: a change made outside a
  // run (a list or settings saved, a master file refreshed) is also made by a run, under its lock.
  bool AcquireUnlessHeld(const std::string& folder, const std::string& started) {
    if (HeldDescriptor() < 0) return Acquire(folder, started);
    holder_.clear();
    return true;
  }
  void Release();
  bool held() const { return fd_ >= 0; }
  // "Another run has been in progress since 18:02:11 (process 4242)." after a failed Acquire.
  const std::string& holder() const { return holder_; }
  // The descriptor of the lock this process holds, -1 when none. A converter batch started by a
  // run inherits it, so a run killed while its batch converts still counts as running until the
  // batch ends: the next run cannot clear the folders the batch is writing. While it is held, no
  // other run of this installation sweeps temporary files, so the file writers this process opens
  // take no locks; a writer opened under it must be committed or discarded before it is released.
  static int HeldDescriptor();

 private:
  int fd_ = -1;
  std::string holder_;
};

}  // namespace corvanet
