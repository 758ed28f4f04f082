#include "pxfiles/file_io.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace corvanet::pxfiles {

namespace {

// A backslash is a separator only where the system takes it as one; elsewhere it may stand in a
// folder's name.
bool IsSeparator(char c) {
#ifdef _WIN32
  return c == '/' || c == '\\';
#else
  return c == '/';
#endif
}

// Writes all of `content`; write(2) may take less than asked.
bool WriteAll(int fd, std::string_view content) {
  while (!content.empty()) {
    const ssize_t written = ::write(fd, content.data(), content.size());
    if (written < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    content.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

// Creates a temporary file beside `path`: the process id keeps it apart from other converters,
// the counter from this one's other files, and O_EXCL from anything a killed process left.
int CreateTemporary(const std::string& path, std::string& temporary) {
  static unsigned counter = 0;
  const std::string stem = path + ".tmp-" + std::to_string(::getpid()) + "-";
  for (int attempt = 0; attempt < 100; ++attempt) {
    temporary = stem + std::to_string(counter++);
    const int fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd >= 0 || errno != EEXIST) return fd;
  }
  return -1;
}

}  // namespace

std::string SystemError() {
  return std::strerror(errno);
}

std::string JoinPath(std::string_view folder, std::string_view name) {
  std::string path(folder);
  if (!path.empty() && !IsSeparator(path.back())) path += '/';
  path += name;
  return path;
}

ReadResult ReadSmallFile(const std::string& path, std::size_t limit, std::string& content,
                         std::string& error) {
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) {
    if (errno == ENOENT) return ReadResult::kMissing;
    error = path + ": " + SystemError();
    return ReadResult::kFailed;
  }
  struct stat info {};
  ReadResult result = ReadResult::kRead;
  if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
    error = path + ": not a readable file";
    result = ReadResult::kFailed;
  } else if (static_cast<std::size_t>(info.st_size) > limit) {
    error = path + ": " + std::to_string(info.st_size) + " bytes, more than such a file can hold";
    result = ReadResult::kFailed;
  } else {
    content.resize(static_cast<std::size_t>(info.st_size));
    std::size_t done = 0;
    while (done < content.size()) {
      const ssize_t got = ::read(fd, content.data() + done, content.size() - done);
      if (got < 0 && errno == EINTR) continue;
      if (got <= 0) break;
      done += static_cast<std::size_t>(got);
    }
    if (done != content.size()) {
      error = path + ": cannot read it";
      result = ReadResult::kFailed;
    }
  }
  ::close(fd);
  return result;
}

bool ReplaceFile(const std::string& path, std::string_view content, std::string& error) {
  std::string temporary;
  const int fd = CreateTemporary(path, temporary);
  if (fd < 0) {
    error = "cannot write " + path + ": " + SystemError();
    return false;
  }
  bool ok = WriteAll(fd, content);
  ok = ::close(fd) == 0 && ok;
  if (ok && ::rename(temporary.c_str(), path.c_str()) == 0) return true;
  error = "cannot write " + path + ": " + SystemError();
  ::unlink(temporary.c_str());
  return false;
}

bool MakeFolders(const std::string& folder, std::string& error) {
  struct stat info {};
  if (::stat(folder.c_str(), &info) == 0 && S_ISDIR(info.st_mode)) return true;
  // Each prefix that ends before a separator, then the whole path.
  int failure = ENOTDIR;
  for (std::size_t i = 1; i <= folder.size(); ++i) {
    if (i < folder.size() && !IsSeparator(folder[i])) continue;
    if (IsSeparator(folder[i - 1])) continue;
    if (::mkdir(folder.substr(0, i).c_str(), 0777) != 0 && errno != EEXIST) {
      failure = errno;
      break;
    }
  }
  if (::stat(folder.c_str(), &info) == 0 && S_ISDIR(info.st_mode)) return true;
  error = "cannot create the folder " + folder + ": " + std::strerror(failure);
  return false;
}

bool AppendLine(const std::string& path, std::string_view line) {
  const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
  if (fd < 0) return false;
  std::string text(line);
  text += "\r\n";
  const bool ok = WriteAll(fd, text);
  return ::close(fd) == 0 && ok;
}

}  // namespace corvanet::pxfiles
