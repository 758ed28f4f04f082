#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>
#include <windows.h>

#include <cerrno>
#include <string_view>

#include "core/platform/windows_text.h"
#include "pxfiles/system_io.h"

namespace corvanet::pxfiles::system {

namespace {

using windows::Wide;

int Open(const std::string& path, int flags) {
  return ::_wopen(Wide(path).c_str(), flags | _O_BINARY | _O_NOINHERIT, _S_IREAD | _S_IWRITE);
}

}  // namespace

int OpenForReading(const std::string& path) {
  return Open(path, _O_RDONLY);
}

int CreateNew(const std::string& path) {
  return Open(path, _O_WRONLY | _O_CREAT | _O_EXCL);
}

int OpenForAppending(const std::string& path) {
  return Open(path, _O_WRONLY | _O_CREAT | _O_APPEND);
}

long Read(int descriptor, char* into, std::size_t size) {
  return ::_read(descriptor, into, static_cast<unsigned>(std::min<std::size_t>(size, 1u << 30)));
}

long Write(int descriptor, const char* from, std::size_t size) {
  return ::_write(descriptor, from, static_cast<unsigned>(std::min<std::size_t>(size, 1u << 30)));
}

bool Close(int descriptor) {
  return ::_close(descriptor) == 0;
}

std::optional<std::uint64_t> RegularFileSize(int descriptor) {
  struct _stat64 info {};
  if (::_fstat64(descriptor, &info) != 0 || (info.st_mode & _S_IFREG) == 0) return std::nullopt;
  return static_cast<std::uint64_t>(info.st_size);
}

std::optional<std::uint64_t> RegularFileSize(const std::string& path) {
  struct _stat64 info {};
  if (::_wstat64(Wide(path).c_str(), &info) != 0 || (info.st_mode & _S_IFREG) == 0) {
    return std::nullopt;
  }
  return static_cast<std::uint64_t>(info.st_size);
}

bool IsFolder(const std::string& path) {
  const DWORD attributes = GetFileAttributesW(Wide(path).c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool MakeFolder(const std::string& path) {
  return ::_wmkdir(Wide(path).c_str()) == 0;
}

bool ReplaceWith(const std::string& from, const std::string& to) {
  if (MoveFileExW(Wide(from).c_str(), Wide(to).c_str(),
                  MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) {
    return true;
  }
  errno = GetLastError() == ERROR_ACCESS_DENIED ? EACCES : EIO;
  return false;
}

void Remove(const std::string& path) {
  ::_wunlink(Wide(path).c_str());
}

long ProcessId() {
  return static_cast<long>(GetCurrentProcessId());
}

std::tm LocalTime(std::time_t time) {
  std::tm local{};
  localtime_s(&local, &time);
  return local;
}

bool IsSeparator(char c) {
  return c == '/' || c == '\\';
}

}  // namespace corvanet::pxfiles::system
