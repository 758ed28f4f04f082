#pragma once
// Folder texts end with the native separator and paths are joined by plain concatenation, so every
// folder name the program builds goes through here.
#include <string>
#include <string_view>

namespace corvanet {

#ifdef _WIN32
inline constexpr char kSep = '\\';
#else
inline constexpr char kSep = '/';
#endif

// "Daily" -> "Daily/" (or "Daily\" on Windows).
inline std::string Folder(std::string_view name) {
  std::string folder(name);
  folder += kSep;
  return folder;
}

// Adds the separator when the text does not end with one already.
inline std::string WithTrailingSeparator(std::string path) {
  if (path.empty() || (path.back() != '/' && path.back() != kSep)) path += kSep;
  return path;
}

// The Windows rule for the installation root: the program's folder with a trailing backslash, cut
// after its second backslash ("D:\Apps\Tools\X" gives "D:\Apps\"). A folder with fewer than two
// backslashes keeps the whole text.
std::string BaseDirectoryFromProgramFolder(std::string_view program_folder);

// "/x" on POSIX; "C:\x", "C:/x" or "\\server\x" on Windows.
bool IsAbsolutePath(std::string_view path);

// True when the text holds a line break, a tab or another control character. Paths holding one are
// refused wherever they are taken in: written into a batch file, a unit file or a crontab line,
// a line break would start a command of its own.
bool HasControlCharacter(std::string_view text);

// True when a symbol may be used as (part of) a file name: no separator of either kind, no "..",
// no control character, not empty.
bool IsSafeFileNamePart(std::string_view text);

}  // namespace corvanet
