#pragma once
// Files an installation carries (help pages, Stats.csv), compiled into the program.
#include <span>
#include <string_view>

namespace corvanet {

struct EmbeddedFile {
  std::string_view relative_path;  // with '/' between folders, e.g. "Docs/Intro.htm"
  std::string_view content;
};

std::span<const EmbeddedFile> EmbeddedResources();

}  // namespace corvanet
