#include "core/platform/file_identity.h"

#ifndef _WIN32
#include <sys/stat.h>
#endif

namespace corvanet {

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
