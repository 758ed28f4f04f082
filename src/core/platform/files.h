#pragma once
// File operations. Whole-file writes go through AtomicFileWriter (atomic_file_writer.h), so a
// failure (or a killed process) leaves the old file.
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "core/platform/atomic_file_writer.h"

namespace corvanet {

// Writes a whole file at once (atomic replace).
bool WriteWholeFile(const std::string& path, std::string_view content,
                    FileAccess access = FileAccess::kNormal);
// Appends one line (with CR LF); creates the file when missing.
bool AppendLine(const std::string& path, std::string_view line,
                FileAccess access = FileAccess::kNormal);
// Creates an empty file when none exists; leaves an existing one alone. False on failure.
bool TouchFile(const std::string& path);

bool FileExists(const std::string& path);
bool DirectoryExists(const std::string& path);
std::optional<std::uintmax_t> FileSize(const std::string& path);
// Creates one folder (not its parents). True when it exists afterwards.
bool CreateFolder(const std::string& path);
// Creates a folder and its missing parents.
bool CreateFolders(const std::string& path);
// Deletes the files directly in `folder` (not in its subfolders) whose names `wanted` accepts;
// counts them in `deleted`.
// False when the folder is missing or a wanted file could not be deleted.
bool DeleteFilesIn(const std::string& folder, bool (*wanted)(std::string_view name),
                   int* deleted = nullptr);
// The same with another way to remove a file (a move to the trash): `remove` is given each wanted
// file's path and says whether it went.
bool RemoveFilesIn(const std::string& folder, bool (*wanted)(std::string_view name),
                   const std::function<bool(const std::string& path)>& remove);
// Why the program must never delete files in `folder`: it is the root of the file system, the
// home folder, the installation's base folder or a folder above it (links resolved first).
// Empty when deleting there is allowed.
std::string ProtectedFolderReason(const std::string& folder, const std::string& base_directory);
bool RemoveFile(const std::string& path);
// Copies `from` onto `to` through a temporary file, replacing `to` only when the copy is complete.
bool CopyFileReplacing(const std::string& from, const std::string& to);
// The last line of a file that holds more than blanks (its end read, not the whole file), without
// its line end; empty when the file is missing, empty or holds only blank lines.
// The look ahead of a run asks this of every base copy, so it costs four system calls.
std::string LastLineOf(const std::string& path);
// Whether a file's last byte ends a line: its last line is whole, not cut off in the middle.
bool EndsWithLineBreak(const std::string& path);
// The same of an open file of `size` bytes.
std::string LastLineOf(int descriptor, std::uint64_t size);
// The same of `tail`, a file's last bytes, when it holds that line whole: false when the line may
// go on before the tail's start (or no line is in it) and the tail does not start the file.
bool LastLineIn(std::string_view tail, bool starts_file, std::string& line);
// A line without the blanks, tabs and carriage returns at its end: empty when it holds nothing
// more.
std::string_view TrimLineEnd(std::string_view line);
// The whole content of a (small) file; nullopt when it cannot be read.
std::optional<std::string> ReadWholeFile(const std::string& path);
std::string CurrentDirectory();

}  // namespace corvanet
