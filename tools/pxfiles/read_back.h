#pragma once
// A folder's securities read back after the converter has run, for the program that drives it: a
// price file counts as converted only when its security is listed with all of its bars.
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "pxfiles/index_files.h"

namespace corvanet::pxfiles {

class FolderReadBack {
 public:
  // Reads the folder's index files; false with `error` when they are damaged. A folder without
  // them lists no security.
  bool Load(const std::string& folder, std::string& error);
  // The bars of the security stored under `symbol` (cut as the converter cuts it), as its data
  // file's header counts them and its size confirms; nullopt with `error` when the index does not
  // list it or its data file is missing or does not match its header.
  std::optional<std::size_t> Bars(std::string_view symbol, std::string& error) const;

 private:
  std::string folder_;
  IndexFiles index_;
};

}  // namespace corvanet::pxfiles
