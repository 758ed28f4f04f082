#include "core/platform/paths.h"

namespace corvanet {

std::string BaseDirectoryFromProgramFolder(std::string_view program_folder) {
  std::string folder(program_folder);
  folder += '\\';
  int backslashes = 0;
  for (std::size_t i = 0; i < folder.size(); ++i) {
    if (folder[i] == '\\' && ++backslashes == 2) return folder.substr(0, i + 1);
  }
  return folder;
}

bool IsAbsolutePath(std::string_view path) {
#ifdef _WIN32
  if (path.size() >= 3 && path[1] == ':' && (path[2] == '\\' || path[2] == '/')) return true;
  return path.size() >= 2 && path[0] == '\\' && path[1] == '\\';
#else
  return !path.empty() && path.front() == '/';
#endif
}

bool HasControlCharacter(std::string_view text) {
  for (const char c : text) {
    const auto u = static_cast<unsigned char>(c);
    if (u < 0x20 || u == 0x7f) return true;
  }
  return false;
}

bool IsSafeFileNamePart(std::string_view text) {
  if (text.empty() || text.find("..") != std::string_view::npos) return false;
  if (HasControlCharacter(text)) return false;
  return text.find_first_of("/\\") == std::string_view::npos;
}

}  // namespace corvanet
