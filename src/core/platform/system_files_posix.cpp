#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <system_error>

#include "core/platform/atomic_file_writer.h"
#include "core/platform/file_access.h"
#include "core/platform/system_files.h"

namespace corvanet {

namespace fs = std::filesystem;

std::FILE* OpenForWriting(const std::string& path, FileAccess access, bool exclusive) {
#if defined(__GLIBC__)
  // A new file of the normal mode needs no descriptor of its own: fdopen would ask the system for
  // the descriptor's flags, once for each of the tens of thousands of files a statistics pass
  // writes.
  if (exclusive && access == FileAccess::kNormal) return std::fopen(path.c_str(), "wbxe");
#endif
  const int flags = O_WRONLY | O_CREAT | O_CLOEXEC | (exclusive ? O_EXCL : O_APPEND);
  const int fd = OpenRegularFile(path, flags, access == FileAccess::kOwnerOnly ? 0600 : 0666);
  if (fd < 0) return nullptr;
  std::FILE* file = ::fdopen(fd, exclusive ? "wb" : "ab");
  if (file == nullptr) ::close(fd);
  return file;
}

bool ReplaceFileWith(const std::string& from, const std::string& to, std::string& error) {
  std::error_code ec;
  fs::rename(from, to, ec);
  if (ec) error = ec.message();
  return !ec;
}

bool FlushToDisk(std::FILE* /*file*/) {
  return true;
}

bool RestrictToOwner(const std::string& path) {
  std::error_code ec;
  fs::permissions(path, fs::perms::owner_read | fs::perms::owner_write, fs::perm_options::replace,
                  ec);
  return !ec;
}

}  // namespace corvanet
