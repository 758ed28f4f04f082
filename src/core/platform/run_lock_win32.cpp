// The run lock on Windows: a byte-range lock (LockFileEx) on the lock file, which the system drops
// when the handle is closed or the process ends, however it ends.
#include <io.h>
#include <windows.h>

#include <atomic>

#include "core/platform/run_lock.h"
#include "core/platform/windows_text.h"

namespace corvanet {

namespace {

constexpr const char* kLockFile = "RunLock.txt";
// The byte locked lies far past the note, so a second run can still read who holds the lock (a
// locked range cannot be read by other processes).
constexpr DWORD kLockedOffsetHigh = 1;

std::atomic<int> held_descriptor{-1};

std::string ReadNote(HANDLE file) {
  char text[64] = {};
  DWORD got = 0;
  OVERLAPPED at{};
  if (!ReadFile(file, text, sizeof text - 1, &got, &at)) return {};
  return std::string(text, got);
}

}  // namespace

int RunLock::HeldDescriptor() {
  return held_descriptor.load();
}

bool RunLock::Acquire(const std::string& folder, const std::string& started) {
  Release();
  holder_.clear();
  const std::string path = folder + kLockFile;
  HANDLE file = CreateFileW(windows::Wide(path).c_str(), GENERIC_READ | GENERIC_WRITE,
                            FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS,
                            FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) {
    holder_ = "The run lock " + path + " cannot be opened: " + windows::LastErrorText() + ".";
    return false;
  }
  OVERLAPPED range{};
  range.OffsetHigh = kLockedOffsetHigh;
  if (!LockFileEx(file, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &range)) {
    // The holder wrote "<time> <process id>" when it took the lock.
    const std::string held = ReadNote(file);
    CloseHandle(file);
    std::string time = "an unknown time";
    std::string process = "unknown";
    const std::size_t blank = held.find(' ');
    if (blank != std::string::npos) {
      time = held.substr(0, blank);
      process = held.substr(blank + 1, held.find_first_of("\r\n") - blank - 1);
    }
    holder_ = "Another run has been in progress since " + time + " (process " + process + ").";
    return false;
  }
  const std::string note = started + " " + std::to_string(GetCurrentProcessId()) + "\r\n";
  DWORD written = 0;
  OVERLAPPED at{};
  if (SetFilePointer(file, 0, nullptr, FILE_BEGIN) == 0 && SetEndOfFile(file)) {
    WriteFile(file, note.data(), static_cast<DWORD>(note.size()), &written, &at);
  }
  // The lock holds all the same when the note could not be written.
  const int fd = _open_osfhandle(reinterpret_cast<intptr_t>(file), 0);
  if (fd < 0) {
    CloseHandle(file);
    holder_ = "The run lock " + path + " cannot be kept.";
    return false;
  }
  fd_ = fd;
  held_descriptor.store(fd);
  return true;
}

void RunLock::Release() {
  if (fd_ < 0) return;
  int mine = fd_;
  held_descriptor.compare_exchange_strong(mine, -1);
  _close(fd_);  // closing the handle drops the lock
  fd_ = -1;
}

}  // namespace corvanet
