#include "core/platform/files.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

#ifndef _WIN32
#include <fcntl.h>
#include <unistd.h>
#else
#include <process.h>
#endif

namespace corvanet {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kWriteBuffer = 64 * 1024;

constexpr std::string_view kTempMarker = ".tmp-";

long ProcessId() {
#ifndef _WIN32
  return static_cast<long>(::getpid());
#else
  return static_cast<long>(::_getpid());
#endif
}

std::string TempNameFor(const std::string& target) {
  static std::atomic<unsigned> counter{0};
  return target + std::string(kTempMarker) + std::to_string(ProcessId()) + "-" +
         std::to_string(counter++);
}

bool AllDigits(std::string_view text) {
  return !text.empty() &&
         std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// ".tmp-<process id>-<counter>", the end of every name TempNameFor makes.
bool IsTempSuffix(std::string_view suffix) {
  suffix.remove_prefix(kTempMarker.size());
  const std::size_t dash = suffix.find('-');
  return dash != std::string_view::npos && AllDigits(suffix.substr(0, dash)) &&
         AllDigits(suffix.substr(dash + 1));
}

// Opens a file for writing, created with the owner-only mode from the start when asked, so no other
// user can open it in the moment before its mode is narrowed.
std::FILE* OpenForWriting(const std::string& path, FileAccess access, bool exclusive) {
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
      failed_(other.failed_) {}

AtomicFileWriter& AtomicFileWriter::operator=(AtomicFileWriter&& other) noexcept {
  if (this != &other) {
    Discard();
    file_ = std::exchange(other.file_, nullptr);
    buffer_ = std::move(other.buffer_);
    target_ = std::move(other.target_);
    temp_ = std::move(other.temp_);
    error_ = std::move(other.error_);
    failed_ = other.failed_;
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
  // Exclusive: never reuse a file someone else left under the temporary name.
  file_ = OpenForWriting(temp_, access, true);
  if (file_ == nullptr) {
    error_ = std::strerror(errno);
    failed_ = true;
    return false;
  }
  if (access == FileAccess::kOwnerOnly) RestrictToOwner(temp_);
  if (!buffer_) buffer_ = std::make_unique<char[]>(kWriteBuffer);
  std::setvbuf(file_, buffer_.get(), _IOFBF, kWriteBuffer);
  return true;
}

void AtomicFileWriter::Write(std::string_view text) {
  if (file_ == nullptr || failed_ || text.empty()) return;
  if (std::fwrite(text.data(), 1, text.size(), file_) != text.size()) {
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
  if (!existed && access == FileAccess::kOwnerOnly) RestrictToOwner(path);
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

bool DeleteFilesIn(const std::string& folder) {
  std::error_code ec;
  fs::directory_iterator it(folder, ec);
  if (ec) return false;
  bool ok = true;
  for (const auto& entry : it) {
    std::error_code entry_ec;
    if (entry.is_regular_file(entry_ec) || entry.is_symlink(entry_ec)) {
      fs::remove(entry.path(), entry_ec);
      if (entry_ec) ok = false;
    }
  }
  return ok;
}

int RemoveStaleTemporaryFiles(const std::string& folder) {
  const std::string own = std::string(kTempMarker) + std::to_string(ProcessId()) + "-";
  std::error_code ec;
  int removed = 0;
  for (const auto& entry : fs::directory_iterator(folder, ec)) {
    const std::string name = entry.path().filename().string();
    const std::size_t marker = name.rfind(kTempMarker);
    // Only the exact names TempNameFor gives: a datafile whose symbol happens to hold ".tmp-"
    // is somebody's data.
    if (marker == std::string::npos || !IsTempSuffix(std::string_view(name).substr(marker)) ||
        name.compare(marker, own.size(), own) == 0) {
      continue;
    }
    std::error_code remove_ec;
    if (entry.is_regular_file(remove_ec) && fs::remove(entry.path(), remove_ec)) ++removed;
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
