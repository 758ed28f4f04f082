#pragma once
// The converter's command line, as the batch files call it:
//   PxFiles -f <price file> -r fileReplace -o <output folder>
// The options may come in any order; each must be given once, and the word after it is its value
// as it stands (the batch lines quote every path). "-h" or "--help" alone asks for the usage.
#include <string>
#include <string_view>

namespace corvanet::pxfiles {

inline constexpr std::string_view kUsage =
    "usage: PxFiles -f <price file> -r fileReplace -o <output folder>\n";

struct Options {
  std::string price_file;
  std::string output_folder;
};

enum class Parsed { kConvert, kHelp, kUsageError };

// kUsageError with `error` naming the mistake.
Parsed ParseCommandLine(int argc, const char* const* argv, Options& options, std::string& error);

}  // namespace corvanet::pxfiles
