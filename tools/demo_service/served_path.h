#pragma once
// Maps a request path onto the served tree, refusing anything that could reach outside it.
#include <optional>
#include <string>
#include <string_view>

namespace corvanet::demo {

// "/ovalith/data//Zennor_System.txt" -> "/ovalith/data/Zennor_System.txt". Clients join the data
// set path and a name that begins with a separator, so doubled slashes are ordinary here.
std::string CollapseSlashes(std::string_view path);

// The file under `root` (which ends with '/') for a collapsed request path; nullopt for a path
// outside <root>/ovalith/, with an empty, "." or ".." part, a part starting with '.' (the state
// files live in such a folder), a backslash or a control character.
std::optional<std::string> LocalPath(const std::string& root, std::string_view path);

}  // namespace corvanet::demo
