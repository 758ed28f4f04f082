#pragma once
// The file system library's path for one of the program's texts, which are UTF-8 on every system,
// and back. A path made straight from a std::string would be read in the system's narrow code page
// on Windows, where a name such as "Börse" would then name another file.
#include <filesystem>
#include <string>
#include <string_view>

namespace corvanet {

inline std::filesystem::path NativePath(std::string_view utf8) {
  return std::filesystem::path(
      std::u8string_view(reinterpret_cast<const char8_t*>(utf8.data()), utf8.size()));
}

inline std::string Utf8Path(const std::filesystem::path& path) {
  const std::u8string text = path.u8string();
  return std::string(text.begin(), text.end());
}

}  // namespace corvanet
