#include "core/platform/process.h"

#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <vector>

#include "core/platform/paths.h"

namespace corvanet {

std::string HelperFolder() {
  if (const char* folder = std::getenv("CORVANET_HELPER_DIR");
      folder != nullptr && *folder != '\0') {
    return WithTrailingSeparator(folder);
  }
  const std::string program_folder = ExecutableFolder();
#ifdef CORVANET_HELPERS_FROM_BIN
  // Installed, the helpers are kept apart from the programs a user starts; in the build tree they
  // sit beside them.
  const std::string installed = program_folder + CORVANET_HELPERS_FROM_BIN;
  std::error_code ec;
  if (std::filesystem::exists(installed + "Complete.exe", ec)) return installed;
#endif
  return program_folder;
}

std::string QuotedForCommandLine(std::string_view word) {
  if (!word.empty() && word.find_first_of(" \t\"") == std::string_view::npos) {
    return std::string(word);
  }
  std::string quoted = "\"";
  std::size_t backslashes = 0;
  for (const char c : word) {
    if (c == '\\') {
      ++backslashes;
      continue;
    }
    // Backslashes count double only before a quote: the word's own, or the closing one.
    quoted.append(c == '"' ? backslashes * 2 + 1 : backslashes, '\\');
    backslashes = 0;
    quoted += c;
  }
  quoted.append(backslashes * 2, '\\');
  quoted += '"';
  return quoted;
}

}  // namespace corvanet
