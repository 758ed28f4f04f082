#include "core/platform/file_access.h"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>
#ifndef _WIN32
#include <unistd.h>
#else
#include <io.h>
#endif

namespace corvanet {

int OpenRegularFile(const std::string& path, int flags, int mode) {
#ifndef _WIN32
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
#else
  const int fd = ::_open(path.c_str(), flags | _O_BINARY, mode);
  if (fd < 0) return -1;
  struct _stat64 status {};
  if (::_fstat64(fd, &status) != 0 || (status.st_mode & _S_IFREG) == 0) {
    ::_close(fd);
    errno = EINVAL;
    return -1;
  }
  return fd;
#endif
}

int OpenForReading(const std::string& path) {
#ifndef _WIN32
  return OpenRegularFile(path, O_RDONLY);
#else
  return OpenRegularFile(path, _O_RDONLY);
#endif
}

void CloseFile(int descriptor) {
  if (descriptor < 0) return;
#ifndef _WIN32
  ::close(descriptor);
#else
  ::_close(descriptor);
#endif
}

long ReadAt(int descriptor, char* into, std::size_t size, std::uint64_t offset) {
#ifndef _WIN32
  for (;;) {
    const ssize_t got = ::pread(descriptor, into, size, static_cast<off_t>(offset));
    if (got >= 0 || errno != EINTR) return static_cast<long>(got);
  }
#else
  if (::_lseeki64(descriptor, static_cast<long long>(offset), SEEK_SET) < 0) return -1;
  return ::_read(descriptor, into, static_cast<unsigned>(std::min<std::size_t>(size, 1u << 30)));
#endif
}

std::optional<std::uint64_t> LengthOf(int descriptor) {
  if (descriptor < 0) return std::nullopt;
#ifndef _WIN32
  struct stat status {};
  if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
#else
  struct _stat64 status {};
  if (::_fstat64(descriptor, &status) != 0 || (status.st_mode & _S_IFREG) == 0) return std::nullopt;
#endif
  return static_cast<std::uint64_t>(status.st_size);
}

namespace {

#ifndef _WIN32
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
#endif

}  // namespace

std::optional<FileIdentity> IdentityOf(int descriptor) {
#ifndef _WIN32
  struct stat status {};
  if (descriptor < 0 || ::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
    return std::nullopt;
  }
  return FromStatus(status);
#else
  (void)descriptor;
  return std::nullopt;
#endif
}

std::optional<FileIdentity> IdentityOf(const std::string& path) {
#ifndef _WIN32
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
  return FromStatus(status);
#else
  (void)path;
  return std::nullopt;
#endif
}

}  // namespace corvanet
