#include "core/platform/files.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>
#include <vector>

#include "core/platform/file_access.h"
#include "core/platform/native_path.h"
#include "core/platform/process.h"
#include "core/platform/system_files.h"

namespace corvanet {

namespace fs = std::filesystem;

bool WriteWholeFile(const std::string& path, std::string_view content, FileAccess access) {
  AtomicFileWriter writer(path, access);
  writer.Write(content);
  return writer.Commit();
}

bool AppendLine(const std::string& path, std::string_view line, FileAccess access) {
  const bool existed = FileExists(path);
  std::FILE* file = OpenForWriting(path, access, false);
  if (file == nullptr) return false;
  // A new file is owner-only from its creation; one left wider (by hand, or by a copy) is
  // narrowed before it takes another line.
  if (existed && access == FileAccess::kOwnerOnly) RestrictToOwner(path);
  bool ok = std::fwrite(line.data(), 1, line.size(), file) == line.size();
  ok = std::fwrite(kLineEnd.data(), 1, kLineEnd.size(), file) == kLineEnd.size() && ok;
  return std::fclose(file) == 0 && ok;
}

bool TouchFile(const std::string& path) {
  std::FILE* file = OpenForWriting(path, FileAccess::kNormal, false);
  if (file == nullptr) return false;
  return std::fclose(file) == 0;
}

bool FileExists(const std::string& path) {
  std::error_code ec;
  return fs::is_regular_file(NativePath(path), ec);
}

bool DirectoryExists(const std::string& path) {
  std::error_code ec;
  return fs::is_directory(NativePath(path), ec);
}

std::optional<std::uintmax_t> FileSize(const std::string& path) {
  std::error_code ec;
  const auto size = fs::file_size(NativePath(path), ec);
  if (ec) return std::nullopt;
  return size;
}

bool CreateFolder(const std::string& path) {
  std::error_code ec;
  fs::create_directory(NativePath(path), ec);
  return DirectoryExists(path);
}

bool CreateFolders(const std::string& path) {
  std::error_code ec;
  fs::create_directories(NativePath(path), ec);
  return DirectoryExists(path);
}

bool DeleteFilesIn(const std::string& folder, bool (*wanted)(std::string_view name), int* deleted) {
  return RemoveFilesIn(folder, wanted, [deleted](const std::string& path) {
    std::error_code ec;
    const bool removed = fs::remove(NativePath(path), ec);
    if (removed && deleted != nullptr) ++*deleted;
    return removed || !ec;
  });
}

bool RemoveFilesIn(const std::string& folder, bool (*wanted)(std::string_view name),
                   const std::function<bool(const std::string& path)>& remove) {
  std::error_code ec;
  fs::directory_iterator it(NativePath(folder), ec);
  if (ec) return false;
  // Listed first: a removal while the folder is read could make the listing skip a file.
  std::vector<std::string> paths;
  for (const auto& entry : it) {
    std::error_code entry_ec;
    if (!entry.is_regular_file(entry_ec) && !entry.is_symlink(entry_ec)) continue;
    if (wanted(Utf8Path(entry.path().filename()))) paths.push_back(Utf8Path(entry.path()));
  }
  bool ok = true;
  for (const std::string& path : paths) ok = remove(path) && ok;
  return ok;
}

namespace {

// The folder a text leads to, links resolved, without a trailing separator; empty when unknown.
fs::path ResolvedFolder(const std::string& folder) {
  std::error_code ec;
  // An empty text names the current folder, which is what a delete there would reach.
  fs::path path = fs::absolute(NativePath(folder.empty() ? "." : folder), ec);
  if (ec) return {};
  path = fs::weakly_canonical(path, ec);
  if (ec) return {};
  if (!path.has_filename() && path != path.root_path()) path = path.parent_path();
  return path;
}

}  // namespace

std::string ProtectedFolderReason(const std::string& folder, const std::string& base_directory) {
  const fs::path target = ResolvedFolder(folder);
  if (target.empty()) return "a folder whose place cannot be told";
  if (target == target.root_path()) return "the root of the file system";
  const std::string home = HomeFolder();
  if (!home.empty() && target == ResolvedFolder(home)) return "the home folder";
  if (base_directory.empty()) return {};
  const fs::path base = ResolvedFolder(base_directory);
  if (target == base) return "the installation folder";
  // Above the installation folder when every part of its path starts the installation's.
  const auto [t, b] = std::mismatch(target.begin(), target.end(), base.begin(), base.end());
  if (t == target.end()) return "a folder above the installation folder";
  return {};
}

bool RemoveFile(const std::string& path) {
  std::error_code ec;
  fs::remove(NativePath(path), ec);
  return !ec;
}

bool CopyFileReplacing(const std::string& from, const std::string& to) {
  const int in = OpenForReading(from);
  if (in < 0) return false;
  const std::optional<std::uint64_t> length = LengthOf(in);
  AtomicFileWriter writer(to);
  if (length) writer.CopyFrom(in, 0, *length);
  CloseFile(in);
  return length && writer.Commit();
}

std::string_view TrimLineEnd(std::string_view line) {
  while (!line.empty() && (line.back() == '\r' || line.back() == ' ' || line.back() == '\t')) {
    line.remove_suffix(1);
  }
  return line;
}

bool LastLineIn(std::string_view tail, bool starts_file, std::string& line) {
  std::size_t end = tail.size();
  while (end > 0) {
    const std::size_t newline = tail.rfind('\n', end - 1);
    const std::size_t begin = newline == std::string_view::npos ? 0 : newline + 1;
    const std::string_view found = TrimLineEnd(tail.substr(begin, end - begin));
    if (!found.empty()) {
      line.assign(found);
      return newline != std::string_view::npos || starts_file;
    }
    if (newline == std::string_view::npos) break;
    end = newline;
  }
  line.clear();
  return starts_file;
}

// A row is a few hundred bytes: a short tail nearly always holds the last one whole, and the long
// one is read only when it does not. A longer last line comes back as its tail, which still ends
// it.
std::string LastLineOf(int descriptor, std::uint64_t size) {
  std::string line;
  std::string tail;
  for (const std::uint64_t wanted : {std::uint64_t{4 * 1024}, std::uint64_t{64 * 1024}}) {
    const std::uint64_t start = size > wanted ? size - wanted : 0;
    tail.resize(static_cast<std::size_t>(size - start));
    const long got = ReadAt(descriptor, tail.data(), tail.size(), start);
    if (got < 0) return {};
    tail.resize(static_cast<std::size_t>(got));
    if (LastLineIn(tail, start == 0, line) || wanted > size) break;
  }
  return line;
}

std::string LastLineOf(const std::string& path) {
  const int file = OpenForReading(path);
  const std::optional<std::uint64_t> length = LengthOf(file);
  std::string line = length ? LastLineOf(file, *length) : std::string();
  CloseFile(file);
  return line;
}

bool EndsWithLineBreak(const std::string& path) {
  const int file = OpenForReading(path);
  const std::optional<std::uint64_t> length = LengthOf(file);
  char last = 0;
  const bool read = length && *length > 0 && ReadAt(file, &last, 1, *length - 1) == 1;
  CloseFile(file);
  return read && last == '\n';
}

std::optional<std::string> ReadWholeFile(const std::string& path) {
  const int file = OpenForReading(path);
  if (file < 0) return std::nullopt;
  std::string content;
  char buffer[16 * 1024];
  long got = 0;
  while ((got = ReadAt(file, buffer, sizeof buffer, content.size())) > 0) {
    content.append(buffer, static_cast<std::size_t>(got));
  }
  CloseFile(file);
  if (got < 0) return std::nullopt;
  return content;
}

std::string CurrentDirectory() {
  std::error_code ec;
  auto path = fs::current_path(ec);
  if (ec) return {};
  std::string text = Utf8Path(path);
  if (text.empty() || text.back() != static_cast<char>(fs::path::preferred_separator)) {
    text += static_cast<char>(fs::path::preferred_separator);
  }
  return text;
}

}  // namespace corvanet
