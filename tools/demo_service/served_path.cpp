#include "demo_service/served_path.h"

#include "demo_service/data_tree.h"

namespace corvanet::demo {

std::string CollapseSlashes(std::string_view path) {
  std::string out;
  out.reserve(path.size());
  for (const char c : path) {
    if (c == '/' && !out.empty() && out.back() == '/') continue;
    out += c;
  }
  return out;
}

std::optional<std::string> LocalPath(const std::string& root, std::string_view path) {
  if (path.empty() || path.front() != '/') return std::nullopt;
  path.remove_prefix(1);
  bool first = true;
  for (std::string_view rest = path;;) {
    const std::size_t slash = rest.find('/');
    const std::string_view part = rest.substr(0, slash);
    if (part.empty() || part.front() == '.') return std::nullopt;
    if (first && part != kServedTop) return std::nullopt;
    for (const char c : part) {
      if (c == '\\' || static_cast<unsigned char>(c) < 0x20 || c == 0x7F) return std::nullopt;
    }
    first = false;
    if (slash == std::string_view::npos) break;
    rest.remove_prefix(slash + 1);
  }
  return root + std::string(path);
}

}  // namespace corvanet::demo
