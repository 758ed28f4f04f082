#pragma once
// The few file operations whose system calls differ from one system to another, each written once
// per system (system_files_posix.cpp, system_files_win32.cpp) and chosen when the program is built.
#include <cstdio>
#include <string>

namespace corvanet {

// Renames `from` over `to` in one step, so a reader sees the old file or the new one and nothing
// between. False with the system's words in `error` when it cannot.
bool ReplaceFileWith(const std::string& from, const std::string& to, std::string& error);
// Asks the system to put what was written to `file` on the disk before it is renamed over a
// target (Windows); where renames keep their order with the data, nothing to do.
bool FlushToDisk(std::FILE* file);
// Narrows an existing file to its owner alone: mode 0600 on POSIX, an access list naming only the
// current user on Windows.
bool RestrictToOwner(const std::string& path);

}  // namespace corvanet
