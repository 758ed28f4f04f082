#include "pxfiles/file_io.h"

#include <cerrno>
#include <cstring>

#include "pxfiles/system_io.h"

namespace corvanet::pxfiles {

namespace {

using system::IsSeparator;

// Writes all of `content`; write(2) may take less than asked.
bool WriteAll(int fd, std::string_view content) {
  while (!content.empty()) {
    const long written = system::Write(fd, content.data(), content.size());
    if (written < 0) return false;
    content.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

// Creates a temporary file beside `path`: the process id keeps it apart from other converters,
// the counter from this one's other files, and O_EXCL from anything a killed process left.
int CreateTemporary(const std::string& path, std::string& temporary) {
  static unsigned counter = 0;
  const std::string stem = path + ".tmp-" + std::to_string(system::ProcessId()) + "-";
  for (int attempt = 0; attempt < 100; ++attempt) {
    temporary = stem + std::to_string(counter++);
    const int fd = system::CreateNew(temporary);
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
  const int fd = system::OpenForReading(path);
  if (fd < 0) {
    if (errno == ENOENT) return ReadResult::kMissing;
    error = path + ": " + SystemError();
    return ReadResult::kFailed;
  }
  const std::optional<std::uint64_t> size = system::RegularFileSize(fd);
  ReadResult result = ReadResult::kRead;
  if (!size) {
    error = path + ": not a readable file";
    result = ReadResult::kFailed;
  } else if (*size > limit) {
    error = path + ": " + std::to_string(*size) + " bytes, more than such a file can hold";
    result = ReadResult::kFailed;
  } else {
    content.resize(static_cast<std::size_t>(*size));
    std::size_t done = 0;
    while (done < content.size()) {
      const long got = system::Read(fd, content.data() + done, content.size() - done);
      if (got <= 0) break;
      done += static_cast<std::size_t>(got);
    }
    if (done != content.size()) {
      error = path + ": cannot read it";
      result = ReadResult::kFailed;
    }
  }
  system::Close(fd);
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
  ok = system::Close(fd) && ok;
  if (ok && system::ReplaceWith(temporary, path)) return true;
  error = "cannot write " + path + ": " + SystemError();
  system::Remove(temporary);
  return false;
}

bool MakeFolders(const std::string& folder, std::string& error) {
  if (system::IsFolder(folder)) return true;
  // Each prefix that ends before a separator, then the whole path.
  int failure = ENOTDIR;
  for (std::size_t i = 1; i <= folder.size(); ++i) {
    if (i < folder.size() && !IsSeparator(folder[i])) continue;
    if (IsSeparator(folder[i - 1])) continue;
    if (!system::MakeFolder(folder.substr(0, i)) && errno != EEXIST) {
      failure = errno;
      break;
    }
  }
  if (system::IsFolder(folder)) return true;
  error = "cannot create the folder " + folder + ": " + std::strerror(failure);
  return false;
}

bool AppendLine(const std::string& path, std::string_view line) {
  const int fd = system::OpenForAppending(path);
  if (fd < 0) return false;
  std::string text(line);
  text += "\r\n";
  const bool ok = WriteAll(fd, text);
  return system::Close(fd) && ok;
}

}  // namespace corvanet::pxfiles
