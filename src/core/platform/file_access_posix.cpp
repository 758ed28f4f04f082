#include "core/platform/file_access.h"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

namespace corvanet {

int OpenRegularFile(const std::string& path, int flags, int mode) {
  // O_NONBLOCK makes the open of a FIFO return at once; on a regular file it changes nothing, and
  // it is taken off again all the same, so that what the descriptor does never depends on it.
  const int fd = ::open(path.c_str(), flags | O_NONBLOCK | O_CLOEXEC, mode);
  if (fd < 0) return -1;
  struct stat status {};
  if (::fstat(fd, &status) != 0 || !S_ISREG(status.st_mode)) {
    const int error = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
    ::close(fd);
    errno = error;
    return -1;
  }
  if ((flags & O_NONBLOCK) == 0) ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) & ~O_NONBLOCK);
  return fd;
}

int OpenForReading(const std::string& path) {
  return OpenRegularFile(path, O_RDONLY);
}

void CloseFile(int descriptor) {
  if (descriptor < 0) return;
  ::close(descriptor);
}

long ReadAt(int descriptor, char* into, std::size_t size, std::uint64_t offset) {
  for (;;) {
    const ssize_t got = ::pread(descriptor, into, size, static_cast<off_t>(offset));
    if (got >= 0 || errno != EINTR) return static_cast<long>(got);
  }
}

std::optional<std::uint64_t> LengthOf(int descriptor) {
  if (descriptor < 0) return std::nullopt;
  struct stat status {};
  if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
  return static_cast<std::uint64_t>(status.st_size);
}

namespace {

std::int64_t Nanoseconds(const struct timespec& time) {
  return static_cast<std::int64_t>(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
}

FileIdentity FromStatus(const struct stat& status) {
#ifdef __APPLE__
  const struct timespec& modified = status.st_mtimespec;
  const struct timespec& changed = status.st_ctimespec;
#else
  const struct timespec& modified = status.st_mtim;
  const struct timespec& changed = status.st_ctim;
#endif
  return {static_cast<std::uint64_t>(status.st_dev), static_cast<std::uint64_t>(status.st_ino),
          static_cast<std::uint64_t>(status.st_size), Nanoseconds(modified), Nanoseconds(changed)};
}

}  // namespace

std::optional<FileIdentity> IdentityOf(int descriptor) {
  struct stat status {};
  if (descriptor < 0 || ::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
    return std::nullopt;
  }
  return FromStatus(status);
}

std::optional<FileIdentity> IdentityOf(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
  return FromStatus(status);
}

}  // namespace corvanet
