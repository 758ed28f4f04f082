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

bool IsSafeFileNamePart(std::string_view text) {
  if (text.empty() || text.find("..") != std::string_view::npos) return false;
  for (const char c : text) {
    const auto u = static_cast<unsigned char>(c);
    if (c == '/' || c == '\\' || u < 0x20 || u == 0x7f) return false;
  }
  return true;
}

}  // namespace corvanet
