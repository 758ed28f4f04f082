#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "pxfiles/system_io.h"

namespace corvanet::pxfiles::system {

int OpenForReading(const std::string& path) {
  return ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
}

int CreateNew(const std::string& path) {
  return ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
}

int OpenForAppending(const std::string& path) {
  return ::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
}

long Read(int descriptor, char* into, std::size_t size) {
  for (;;) {
    const ssize_t got = ::read(descriptor, into, size);
    if (got >= 0 || errno != EINTR) return static_cast<long>(got);
  }
}

long Write(int descriptor, const char* from, std::size_t size) {
  for (;;) {
    const ssize_t written = ::write(descriptor, from, size);
    if (written >= 0 || errno != EINTR) return static_cast<long>(written);
  }
}

bool Close(int descriptor) {
  return ::close(descriptor) == 0;
}

std::optional<std::uint64_t> RegularFileSize(int descriptor) {
  struct stat info {};
  if (::fstat(descriptor, &info) != 0 || !S_ISREG(info.st_mode)) return std::nullopt;
  return static_cast<std::uint64_t>(info.st_size);
}

std::optional<std::uint64_t> RegularFileSize(const std::string& path) {
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0 || !S_ISREG(info.st_mode)) return std::nullopt;
  return static_cast<std::uint64_t>(info.st_size);
}

bool IsFolder(const std::string& path) {
  struct stat info {};
  return ::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

bool MakeFolder(const std::string& path) {
  return ::mkdir(path.c_str(), 0777) == 0;
}

bool ReplaceWith(const std::string& from, const std::string& to) {
  return ::rename(from.c_str(), to.c_str()) == 0;
}

void Remove(const std::string& path) {
  ::unlink(path.c_str());
}

long ProcessId() {
  return static_cast<long>(::getpid());
}

std::tm LocalTime(std::time_t time) {
  std::tm local{};
  localtime_r(&time, &local);
  return local;
}

bool IsSeparator(char c) {
  return c == '/';
}

}  // namespace corvanet::pxfiles::system
