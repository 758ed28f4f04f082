#include "core/platform/run_lock.h"

#include <atomic>
#include <cstring>

#include <fcntl.h>
#include <pthread.h>
#include <sys/file.h>
#include <unistd.h>

namespace corvanet {

namespace {
constexpr const char* kLockFile = "RunLock.txt";
}  // namespace

namespace {
std::atomic<int> held_descriptor{-1};
}  // namespace

int RunLock::HeldDescriptor() {
  return held_descriptor.load();
}

bool RunLock::Acquire(const std::string& folder, const std::string& started) {
  Release();
  holder_.clear();
  const std::string path = folder + kLockFile;
  const int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  if (fd < 0) {
    holder_ = "The run lock " + path + " cannot be opened: " + std::strerror(errno) + ".";
    return false;
  }
  if (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
    // The holder wrote "<time> <process id>" when it took the lock.
    char text[64] = {};
    const ssize_t got = ::pread(fd, text, sizeof text - 1, 0);
    ::close(fd);
    std::string time = "an unknown time";
    std::string process = "unknown";
    if (got > 0) {
      const std::string_view held(text, static_cast<std::size_t>(got));
      const std::size_t blank = held.find(' ');
      if (blank != std::string_view::npos) {
        time = std::string(held.substr(0, blank));
        process = std::string(held.substr(blank + 1, held.find_first_of("\r\n") - blank - 1));
      }
    }
    holder_ = "Another run has been in progress since " + time + " (process " + process + ").";
    return false;
  }
  const std::string note = started + " " + std::to_string(::getpid()) + "\r\n";
  if (::ftruncate(fd, 0) != 0 || ::pwrite(fd, note.data(), note.size(), 0) < 0) {
    // The lock holds all the same; only the note for a second run is missing.
  }
  fd_ = fd;
  // A child forked from a run shares the lock, but it is not the run: it does not write as one.
  static const int not_in_children =
      ::pthread_atfork(nullptr, nullptr, [] { held_descriptor.store(-1); });
  (void)not_in_children;
  held_descriptor.store(fd);
  return true;
}

void RunLock::Release() {
  if (fd_ < 0) return;
  int mine = fd_;
  held_descriptor.compare_exchange_strong(mine, -1);
  ::close(fd_);  // closing drops the lock
  fd_ = -1;
}

}  // namespace corvanet
