// Files read through descriptors on Windows: a CRT descriptor over a handle opened with every
// sharing mode, so that a file being read can still be replaced or removed by a writer.
#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <algorithm>
#include <cerrno>

#include "core/platform/file_access.h"
#include "core/platform/windows_text.h"

namespace corvanet {

namespace {

HANDLE HandleOf(int descriptor) {
  return descriptor < 0 ? INVALID_HANDLE_VALUE
                        : reinterpret_cast<HANDLE>(_get_osfhandle(descriptor));
}

// Nanoseconds since 1970, as POSIX gives them. The system counts ticks of 100 ns since 1601, and
// those times a hundred no longer fit 64 bits (today's came out negative and the merge index,
// which keeps them, refused its own entries), so the ticks are moved to 1970 first.
std::int64_t Nanoseconds(const LARGE_INTEGER& ticks) {
  constexpr std::int64_t kTicksFrom1601To1970 = 116444736000000000;
  return (static_cast<std::int64_t>(ticks.QuadPart) - kTicksFrom1601To1970) * 100;
}

std::optional<FileIdentity> IdentityOfHandle(HANDLE file) {
  BY_HANDLE_FILE_INFORMATION about{};
  FILE_BASIC_INFO times{};
  if (file == INVALID_HANDLE_VALUE || GetFileType(file) != FILE_TYPE_DISK ||
      !GetFileInformationByHandle(file, &about) ||
      (about.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ||
      !GetFileInformationByHandleEx(file, FileBasicInfo, &times, sizeof times)) {
    return std::nullopt;
  }
  FileIdentity identity;
  identity.device = about.dwVolumeSerialNumber;
  identity.inode = (static_cast<std::uint64_t>(about.nFileIndexHigh) << 32) | about.nFileIndexLow;
  identity.size = (static_cast<std::uint64_t>(about.nFileSizeHigh) << 32) | about.nFileSizeLow;
  identity.modified_ns = Nanoseconds(times.LastWriteTime);
  identity.changed_ns = Nanoseconds(times.ChangeTime);
  return identity;
}

}  // namespace

int OpenForReading(const std::string& path) {
  HANDLE file = CreateFileW(windows::Wide(path).c_str(), GENERIC_READ,
                            FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                            OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return -1;
  // A name such as "NUL" or "CON" opens a device, and a folder opens too with backup semantics:
  // only a file on a disk is read.
  if (!IdentityOfHandle(file)) {
    CloseHandle(file);
    errno = EINVAL;
    return -1;
  }
  const int descriptor = _open_osfhandle(reinterpret_cast<intptr_t>(file), _O_RDONLY);
  if (descriptor < 0) CloseHandle(file);
  return descriptor;
}

void CloseFile(int descriptor) {
  if (descriptor >= 0) _close(descriptor);
}

long ReadAt(int descriptor, char* into, std::size_t size, std::uint64_t offset) {
  HANDLE file = HandleOf(descriptor);
  if (file == INVALID_HANDLE_VALUE) return -1;
  OVERLAPPED at{};
  at.Offset = static_cast<DWORD>(offset);
  at.OffsetHigh = static_cast<DWORD>(offset >> 32);
  DWORD got = 0;
  const auto wanted = static_cast<DWORD>(std::min<std::size_t>(size, std::size_t{1} << 30));
  if (!ReadFile(file, into, wanted, &got, &at)) {
    return GetLastError() == ERROR_HANDLE_EOF ? 0 : -1;
  }
  return static_cast<long>(got);
}

std::optional<std::uint64_t> LengthOf(int descriptor) {
  const std::optional<FileIdentity> identity = IdentityOfHandle(HandleOf(descriptor));
  if (!identity) return std::nullopt;
  return identity->size;
}

std::optional<FileIdentity> IdentityOf(int descriptor) {
  return IdentityOfHandle(HandleOf(descriptor));
}

std::optional<FileIdentity> IdentityOf(const std::string& path) {
  const int descriptor = OpenForReading(path);
  std::optional<FileIdentity> identity = IdentityOfHandle(HandleOf(descriptor));
  CloseFile(descriptor);
  return identity;
}

}  // namespace corvanet
