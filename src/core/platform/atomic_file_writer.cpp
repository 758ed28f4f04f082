#include "core/platform/atomic_file_writer.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <random>
#include <system_error>
#include <utility>

#include "core/platform/file_access.h"
#include "core/platform/native_path.h"
#include "core/platform/run_lock.h"
#include "core/platform/system_files.h"

#ifndef _WIN32
#include <fcntl.h>
#include <pthread.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#else
#include <process.h>
#endif

namespace corvanet {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kWriteBuffer = 64 * 1024;

constexpr std::string_view kTempMarker = ".tmp-";

// Each process marks the names of its temporary files with its id and a random tag of its own, so
// that it can tell the files it is writing itself: a container started afresh gives the same id
// again, but never the same tag.
struct ProcessMark {
  long id = 0;
  std::uint32_t tag = 0;
};

std::uint32_t RandomBits() {
  thread_local std::mt19937 generator{std::random_device{}()};
  return static_cast<std::uint32_t>(generator());
}

#ifndef _WIN32
// Asked for the name of every temporary file (a statistics pass writes tens of thousands), so it
// is worked out once, and once more in a child process after a fork. The id and the tag share one
// word, so that threads asking first at the same moment all take the mark that won.
std::atomic<std::uint64_t> g_mark{0};

ProcessMark Mark() {
  std::uint64_t mark = g_mark.load(std::memory_order_acquire);
  if (mark == 0) {
    static const int forgotten_in_children =
        ::pthread_atfork(nullptr, nullptr, [] { g_mark.store(0); });
    (void)forgotten_in_children;
    const std::uint64_t fresh =
        (static_cast<std::uint64_t>(static_cast<std::uint32_t>(::getpid())) << 32) | RandomBits();
    if (g_mark.compare_exchange_strong(mark, fresh, std::memory_order_acq_rel)) mark = fresh;
  }
  return {static_cast<long>(mark >> 32), static_cast<std::uint32_t>(mark)};
}
#else
ProcessMark Mark() {
  static const ProcessMark mark{static_cast<long>(::_getpid()), RandomBits()};
  return mark;
}
#endif

void AppendHex(std::string& text, std::uint32_t bits) {
  static constexpr char kDigits[] = "0123456789abcdef";
  for (int shift = 28; shift >= 0; shift -= 4) text += kDigits[(bits >> shift) & 0xf];
}

// "-<process id>-<tag>", what every temporary name of this process carries after the marker.
std::string OwnPrefix() {
  const ProcessMark mark = Mark();
  std::string prefix = std::to_string(mark.id) + "-";
  AppendHex(prefix, mark.tag);
  return prefix;
}

// "<target>.tmp-<process id>-<tag><random>": the random part makes every name new, so a file left
// by a dead process never blocks a later write.
std::string TempNameFor(const std::string& target) {
  std::string name = target + std::string(kTempMarker) + OwnPrefix();
  AppendHex(name, RandomBits());
  return name;
}

bool AllOf(std::string_view text, bool (*allowed)(char)) {
  return !text.empty() && std::all_of(text.begin(), text.end(), allowed);
}

// ".tmp-<process id>-<hex>", the end of every name TempNameFor makes (older builds put a decimal
// counter where the hex stands, which the test takes too).
bool IsTempSuffix(std::string_view suffix) {
  suffix.remove_prefix(kTempMarker.size());
  const std::size_t dash = suffix.find('-');
  return dash != std::string_view::npos &&
         AllOf(suffix.substr(0, dash), [](char c) { return c >= '0' && c <= '9'; }) &&
         AllOf(suffix.substr(dash + 1),
               [](char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f'); });
}

// A writer holds a lock on its temporary file for as long as it writes it, so that a sweep in
// another process can tell a file a living writer owns (locked) from one a dead process left (the
// kernel dropped its lock). A sweep may take a new file in the moment between its creation and its
// lock; the writer sees that its name no longer leads to its file and starts again under a new
// name. A sweep never judges the files of its own process (fetches started before a run's sweep
// write while it looks), and every sweep is made by a run holding the installation's run lock: so a
// writer in a process that holds that lock needs no lock of its own, and a statistics pass, which
// writes tens of thousands of files, saves the five system calls of taking and keeping one.
bool HoldWriterLock(std::FILE* file, const std::string& path) {
#ifndef _WIN32
  const int fd = ::fileno(file);
  if (::flock(fd, LOCK_EX) != 0) return true;  // no locks on this file system: nothing to guard
  struct stat held {};
  struct stat named {};
  return ::fstat(fd, &held) == 0 && ::stat(path.c_str(), &named) == 0 &&
         held.st_ino == named.st_ino && held.st_dev == named.st_dev;
#else
  (void)file;  // an open file cannot be deleted there: the sweep fails on it by itself
  (void)path;
  return true;
#endif
}

// True for the temporary files this process names: the ones it is writing, and any it failed to
// remove, which the next run sweeps.
bool IsOwnTemporaryFileName(std::string_view name) {
  const std::size_t marker = name.rfind(kTempMarker);
  return marker != std::string_view::npos &&
         name.substr(marker + kTempMarker.size()).starts_with(OwnPrefix());
}

// True when no living process holds the file's writer lock.
bool IsAbandoned(const fs::path& path) {
#ifndef _WIN32
  const int fd = OpenRegularFile(path.string(), O_RDONLY | O_NOFOLLOW);
  if (fd < 0) return false;
  const bool unlocked = ::flock(fd, LOCK_EX | LOCK_NB) == 0;
  // Removed while the lock is held, so a writer that locks next finds its name gone.
  std::error_code ec;
  const bool removed = unlocked && fs::remove(path, ec);
  ::close(fd);
  return removed;
#else
  std::error_code ec;
  return fs::remove(path, ec);
#endif
}

}  // namespace

AtomicFileWriter::AtomicFileWriter(AtomicFileWriter&& other) noexcept
    : file_(std::exchange(other.file_, nullptr)),
      buffer_(std::move(other.buffer_)),
      target_(std::move(other.target_)),
      temp_(std::move(other.temp_)),
      error_(std::move(other.error_)),
      failed_(other.failed_),
      locked_(other.locked_) {}

AtomicFileWriter& AtomicFileWriter::operator=(AtomicFileWriter&& other) noexcept {
  if (this != &other) {
    Discard();
    file_ = std::exchange(other.file_, nullptr);
    buffer_ = std::move(other.buffer_);
    target_ = std::move(other.target_);
    temp_ = std::move(other.temp_);
    error_ = std::move(other.error_);
    failed_ = other.failed_;
    locked_ = other.locked_;
  }
  return *this;
}

AtomicFileWriter::~AtomicFileWriter() {
  Discard();
}

bool AtomicFileWriter::Open(std::string target, FileAccess access) {
  Discard();
  target_ = std::move(target);
  temp_ = TempNameFor(target_);
  error_.clear();
  failed_ = false;
  locked_ = RunLock::HeldDescriptor() < 0;
  for (int attempt = 0;; ++attempt) {
    file_ = OpenForWriting(temp_, access, true);  // never a file someone left under the name
    if (file_ == nullptr) {
      Fail(std::strerror(errno));
      return false;
    }
    if (!locked_ || HoldWriterLock(file_, temp_) || attempt == 3) break;
    std::fclose(std::exchange(file_, nullptr));
    temp_ = TempNameFor(target_);
  }
  if (!buffer_) buffer_ = std::make_unique_for_overwrite<char[]>(kWriteBuffer);
  std::setvbuf(file_, buffer_.get(), _IOFBF, kWriteBuffer);
  return true;
}

void AtomicFileWriter::Write(std::string_view text) {
  if (file_ == nullptr || failed_ || text.empty()) return;
    // One writer belongs to one thread at a time: the stream's own locking is cost without use,
    // and a merge writes a few hundred thousand lines per run.
#ifdef __GLIBC__
  const std::size_t written = ::fwrite_unlocked(text.data(), 1, text.size(), file_);
#else
  const std::size_t written = std::fwrite(text.data(), 1, text.size(), file_);
#endif
  if (written != text.size()) Fail(std::strerror(errno));
}

void AtomicFileWriter::CopyFrom(int descriptor, std::uint64_t offset, std::uint64_t length) {
  if (file_ == nullptr || failed_ || length == 0) return;
  if (std::fflush(file_) != 0) {
    Fail(std::strerror(errno));
    return;
  }
#ifdef __linux__
  // Page cache to page cache, in as few calls as the system allows. Where it cannot (another kind
  // of file system, an older kernel, any error) and at a source's early end, the loop below goes
  // on from where the copy stopped, and tells what failed if reading and writing fail too.
  auto from = static_cast<loff_t>(offset);
  while (length > 0) {
    const ssize_t copied = ::copy_file_range(descriptor, &from, ::fileno(file_), nullptr,
                                             static_cast<std::size_t>(length), 0);
    if (copied > 0) {
      length -= static_cast<std::uint64_t>(copied);
    } else if (copied == 0 || errno != EINTR) {
      break;
    }
  }
  offset = static_cast<std::uint64_t>(from);
  // The stream takes over from the descriptor: it must be positioned before it writes again.
  if (std::fseek(file_, 0, SEEK_END) != 0) {
    Fail(std::strerror(errno));
    return;
  }
#endif
  std::unique_ptr<char[]> chunk;
  while (length > 0 && !failed_) {
    if (!chunk) chunk = std::make_unique_for_overwrite<char[]>(kWriteBuffer);
    const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(length, kWriteBuffer));
    const long got = ReadAt(descriptor, chunk.get(), wanted, offset);
    if (got <= 0) {
      Fail(got < 0 ? std::strerror(errno) : "the file copied from got shorter");
      return;
    }
    Write({chunk.get(), static_cast<std::size_t>(got)});
    offset += static_cast<std::uint64_t>(got);
    length -= static_cast<std::uint64_t>(got);
  }
}

bool AtomicFileWriter::Commit() {
  if (file_ == nullptr) return false;
  if (std::fflush(file_) != 0 || !FlushToDisk(file_)) Fail(std::strerror(errno));
#ifndef _WIN32
  // The writer's lock lasts while any descriptor of the file is open: a second one keeps it across
  // the rename, so no sweep takes the finished file between its closing and its renaming.
  struct LockHolder {
    int descriptor;
    ~LockHolder() {
      if (descriptor >= 0) ::close(descriptor);
    }
  } const lock_holder{locked_ ? ::dup(::fileno(file_)) : -1};
#endif
  if (std::fclose(std::exchange(file_, nullptr)) != 0) Fail(std::strerror(errno));
  if (failed_) {
    Discard();
    return false;
  }
  std::error_code ec;
  // A FIFO, socket or device where the file belongs was put there by someone: it is not replaced.
  const fs::file_type type = fs::symlink_status(NativePath(target_), ec).type();
  if (type == fs::file_type::fifo || type == fs::file_type::socket ||
      type == fs::file_type::block || type == fs::file_type::character) {
    error_ = "not a regular file";
    Discard();
    return false;
  }
  if (!ReplaceFileWith(temp_, target_, error_)) {
    Discard();
    return false;
  }
  temp_.clear();
  return true;
}

void AtomicFileWriter::Fail(std::string error) {
  if (failed_) return;  // the first failure is the one to tell
  error_ = std::move(error);
  failed_ = true;
}

void AtomicFileWriter::Discard() {
  if (file_ != nullptr) std::fclose(std::exchange(file_, nullptr));
  if (!temp_.empty()) {
    std::error_code ec;
    fs::remove(NativePath(temp_), ec);
    temp_.clear();
  }
}

bool IsTemporaryFileName(std::string_view name) {
  const std::size_t marker = name.rfind(kTempMarker);
  return marker != std::string_view::npos && marker > 0 && IsTempSuffix(name.substr(marker));
}

int RemoveStaleTemporaryFiles(const std::string& folder) {
  std::error_code ec;
  int removed = 0;
  for (const auto& entry : fs::directory_iterator(NativePath(folder), ec)) {
    // Only the exact names TempNameFor gives: a datafile whose symbol happens to hold ".tmp-"
    // is somebody's data.
    const std::string name = Utf8Path(entry.path().filename());
    if (!IsTemporaryFileName(name) || IsOwnTemporaryFileName(name)) continue;
    std::error_code type_ec;
    if (!entry.is_regular_file(type_ec) || entry.is_symlink(type_ec)) continue;
    if (IsAbandoned(entry.path())) ++removed;
  }
  return removed;
}

}  // namespace corvanet
