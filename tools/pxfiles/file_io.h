#pragma once
// The converter's few file operations, on plain system calls: it starts once per price file, so
// it does without stdio buffers and iostreams. Every failure comes back as a text for the log.
#include <cstddef>
#include <string>
#include <string_view>

namespace corvanet::pxfiles {

// `folder` and `name` joined by one separator, whether or not `folder` ends with one.
std::string JoinPath(std::string_view folder, std::string_view name);

enum class ReadResult { kRead, kMissing, kFailed };
// The whole file into `content`. kMissing when there is no such file; kFailed (with `error`) when
// it cannot be read or is larger than `limit` bytes, so a wrong file never fills the memory.
ReadResult ReadSmallFile(const std::string& path, std::size_t limit, std::string& content,
                         std::string& error);

// Replaces `path` with `content`: written to a temporary file of a name no other process uses,
// in the same folder, then renamed over it. On failure the old file is left as it was.
bool ReplaceFile(const std::string& path, std::string_view content, std::string& error);

// Creates `folder` and its missing parents; true when it exists as a folder afterwards.
bool MakeFolders(const std::string& folder, std::string& error);

// Appends `line` and CR LF in one write, creating the file when missing.
bool AppendLine(const std::string& path, std::string_view line);

// The text of the last system error, for messages.
std::string SystemError();

}  // namespace corvanet::pxfiles
