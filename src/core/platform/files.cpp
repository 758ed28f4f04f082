#include "core/platform/files.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <random>
#include <system_error>
#include <utility>

#include "core/platform/file_access.h"
#include "core/platform/run_lock.h"

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
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
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

// Opens a file for writing, created with the owner-only mode from the start when asked, so no other
// user can open it in the moment before its mode is narrowed.
std::FILE* OpenForWriting(const std::string& path, FileAccess access, bool exclusive) {
#if defined(__GLIBC__)
  // A new file of the normal mode needs no descriptor of its own: fdopen would ask the system for
  // the descriptor's flags, once for each of the tens of thousands of files a statistics pass
  // writes.
  if (exclusive && access == FileAccess::kNormal) return std::fopen(path.c_str(), "wbxe");
#endif
#ifndef _WIN32
  const int flags = O_WRONLY | O_CREAT | O_CLOEXEC | (exclusive ? O_EXCL : O_APPEND);
  const mode_t mode = access == FileAccess::kOwnerOnly ? 0600 : 0666;
  const int fd = ::open(path.c_str(), flags, mode);
  if (fd < 0) return nullptr;
  std::FILE* file = ::fdopen(fd, exclusive ? "wb" : "ab");
  if (file == nullptr) ::close(fd);
  return file;
#else
  (void)access;
  return std::fopen(path.c_str(), exclusive ? "wbx" : "ab");
#endif
}

void RestrictToOwner(const std::string& path) {
  std::error_code ec;
  fs::permissions(path, fs::perms::owner_read | fs::perms::owner_write, fs::perm_options::replace,
                  ec);
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
  // Exclusive: never reuse a file someone else left under the temporary name.
  for (int attempt = 0;; ++attempt) {
    file_ = OpenForWriting(temp_, access, true);
    if (file_ == nullptr) {
      error_ = std::strerror(errno);
      failed_ = true;
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
  if (written != text.size()) {
    error_ = std::strerror(errno);
    failed_ = true;
  }
}

bool AtomicFileWriter::Commit() {
  if (file_ == nullptr) return false;
  if (std::fflush(file_) != 0 && !failed_) {
    error_ = std::strerror(errno);
    failed_ = true;
  }
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
  if (std::fclose(std::exchange(file_, nullptr)) != 0 && !failed_) {
    error_ = std::strerror(errno);
    failed_ = true;
  }
  if (failed_) {
    Discard();
    return false;
  }
  std::error_code ec;
  fs::rename(temp_, target_, ec);
  if (ec) {
    error_ = ec.message();
    Discard();
    return false;
  }
  temp_.clear();
  return true;
}

void AtomicFileWriter::Discard() {
  if (file_ != nullptr) std::fclose(std::exchange(file_, nullptr));
  if (!temp_.empty()) {
    std::error_code ec;
    fs::remove(temp_, ec);
    temp_.clear();
  }
}

bool WriteWholeFile(const std::string& path, std::string_view content, FileAccess access) {
  AtomicFileWriter writer(path, access);
  writer.Write(content);
  return writer.Commit();
}

bool AppendLine(const std::string& path, std::string_view line, FileAccess access) {
  const bool existed = FileExists(path);
  std::FILE* file = OpenForWriting(path, access, false);
  if (file == nullptr) return false;
  // A new file is owner-only from its creation; one left wider (by hand, or by a copy) is
  // narrowed before it takes another line.
  if (existed && access == FileAccess::kOwnerOnly) RestrictToOwner(path);
  bool ok = std::fwrite(line.data(), 1, line.size(), file) == line.size();
  ok = std::fwrite(kLineEnd.data(), 1, kLineEnd.size(), file) == kLineEnd.size() && ok;
  return std::fclose(file) == 0 && ok;
}

bool TouchFile(const std::string& path) {
  std::FILE* file = std::fopen(path.c_str(), "ab");
  if (file == nullptr) return false;
  return std::fclose(file) == 0;
}

bool FileExists(const std::string& path) {
  std::error_code ec;
  return fs::is_regular_file(path, ec);
}

bool DirectoryExists(const std::string& path) {
  std::error_code ec;
  return fs::is_directory(path, ec);
}

std::optional<std::uintmax_t> FileSize(const std::string& path) {
  std::error_code ec;
  const auto size = fs::file_size(path, ec);
  if (ec) return std::nullopt;
  return size;
}

bool CreateFolder(const std::string& path) {
  std::error_code ec;
  fs::create_directory(path, ec);
  return DirectoryExists(path);
}

bool CreateFolders(const std::string& path) {
  std::error_code ec;
  fs::create_directories(path, ec);
  return DirectoryExists(path);
}

bool IsTemporaryFileName(std::string_view name) {
  const std::size_t marker = name.rfind(kTempMarker);
  return marker != std::string_view::npos && marker > 0 && IsTempSuffix(name.substr(marker));
}

bool DeleteFilesIn(const std::string& folder, bool (*wanted)(std::string_view name), int* deleted) {
  std::error_code ec;
  fs::directory_iterator it(folder, ec);
  if (ec) return false;
  bool ok = true;
  for (const auto& entry : it) {
    std::error_code entry_ec;
    if (!entry.is_regular_file(entry_ec) && !entry.is_symlink(entry_ec)) continue;
    if (!wanted(entry.path().filename().string())) continue;
    if (fs::remove(entry.path(), entry_ec)) {
      if (deleted != nullptr) ++*deleted;
    } else if (entry_ec) {
      ok = false;
    }
  }
  return ok;
}

namespace {

// The folder a text leads to, links resolved, without a trailing separator; empty when unknown.
fs::path ResolvedFolder(const std::string& folder) {
  std::error_code ec;
  // An empty text names the current folder, which is what a delete there would reach.
  fs::path path = fs::absolute(folder.empty() ? "." : folder, ec);
  if (ec) return {};
  path = fs::weakly_canonical(path, ec);
  if (ec) return {};
  if (!path.has_filename() && path != path.root_path()) path = path.parent_path();
  return path;
}

}  // namespace

std::string ProtectedFolderReason(const std::string& folder, const std::string& base_directory) {
  const fs::path target = ResolvedFolder(folder);
  if (target.empty()) return "a folder whose place cannot be told";
  if (target == target.root_path()) return "the root of the file system";
  const char* home = std::getenv("HOME");
  if (home != nullptr && *home != '\0' && target == ResolvedFolder(home)) return "the home folder";
  if (base_directory.empty()) return {};
  const fs::path base = ResolvedFolder(base_directory);
  if (target == base) return "the installation folder";
  // Above the installation folder when every part of its path starts the installation's.
  const auto [t, b] = std::mismatch(target.begin(), target.end(), base.begin(), base.end());
  if (t == target.end()) return "a folder above the installation folder";
  return {};
}

int RemoveStaleTemporaryFiles(const std::string& folder) {
  std::error_code ec;
  int removed = 0;
  for (const auto& entry : fs::directory_iterator(folder, ec)) {
    // Only the exact names TempNameFor gives: a datafile whose symbol happens to hold ".tmp-"
    // is somebody's data.
    const std::string name = entry.path().filename().string();
    if (!IsTemporaryFileName(name) || IsOwnTemporaryFileName(name)) continue;
    std::error_code type_ec;
    if (!entry.is_regular_file(type_ec) || entry.is_symlink(type_ec)) continue;
    if (IsAbandoned(entry.path())) ++removed;
  }
  return removed;
}

bool RemoveFile(const std::string& path) {
  std::error_code ec;
  fs::remove(path, ec);
  return !ec;
}

bool CopyFileReplacing(const std::string& from, const std::string& to) {
  std::FILE* in = std::fopen(from.c_str(), "rb");
  if (in == nullptr) return false;
  AtomicFileWriter writer(to);
  if (!writer.is_open()) {
    std::fclose(in);
    return false;
  }
  char buffer[kWriteBuffer];
  std::size_t got = 0;
  while ((got = std::fread(buffer, 1, sizeof buffer, in)) > 0) writer.Write({buffer, got});
  const bool read_ok = std::ferror(in) == 0;
  std::fclose(in);
  if (!read_ok) return false;
  return writer.Commit();
}

std::string_view TrimLineEnd(std::string_view line) {
  while (!line.empty() && (line.back() == '\r' || line.back() == ' ' || line.back() == '\t')) {
    line.remove_suffix(1);
  }
  return line;
}

bool LastLineIn(std::string_view tail, bool starts_file, std::string& line) {
  std::size_t end = tail.size();
  while (end > 0) {
    const std::size_t newline = tail.rfind('\n', end - 1);
    const std::size_t begin = newline == std::string_view::npos ? 0 : newline + 1;
    const std::string_view found = TrimLineEnd(tail.substr(begin, end - begin));
    if (!found.empty()) {
      line.assign(found);
      return newline != std::string_view::npos || starts_file;
    }
    if (newline == std::string_view::npos) break;
    end = newline;
  }
  line.clear();
  return starts_file;
}

// A row is a few hundred bytes: a short tail nearly always holds the last one whole, and the long
// one is read only when it does not. A longer last line comes back as its tail, which still ends
// it.
std::string LastLineOf(int descriptor, std::uint64_t size) {
  std::string line;
  std::string tail;
  for (const std::uint64_t wanted : {std::uint64_t{4 * 1024}, std::uint64_t{64 * 1024}}) {
    const std::uint64_t start = size > wanted ? size - wanted : 0;
    tail.resize(static_cast<std::size_t>(size - start));
    const long got = ReadAt(descriptor, tail.data(), tail.size(), start);
    if (got < 0) return {};
    tail.resize(static_cast<std::size_t>(got));
    if (LastLineIn(tail, start == 0, line) || wanted > size) break;
  }
  return line;
}

std::string LastLineOf(const std::string& path) {
  const int file = OpenForReading(path);
  const std::optional<std::uint64_t> length = LengthOf(file);
  std::string line = length ? LastLineOf(file, *length) : std::string();
  CloseFile(file);
  return line;
}

std::optional<std::string> ReadWholeFile(const std::string& path) {
  std::FILE* file = std::fopen(path.c_str(), "rb");
  if (file == nullptr) return std::nullopt;
  std::string content;
  char buffer[16 * 1024];
  std::size_t got = 0;
  while ((got = std::fread(buffer, 1, sizeof buffer, file)) > 0) content.append(buffer, got);
  const bool ok = std::ferror(file) == 0;
  std::fclose(file);
  if (!ok) return std::nullopt;
  return content;
}

std::string CurrentDirectory() {
  std::error_code ec;
  auto path = fs::current_path(ec);
  if (ec) return {};
  std::string text = path.string();
  if (text.empty() || text.back() != static_cast<char>(fs::path::preferred_separator)) {
    text += static_cast<char>(fs::path::preferred_separator);
  }
  return text;
}

}  // namespace corvanet
