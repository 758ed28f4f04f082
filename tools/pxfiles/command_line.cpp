#include "pxfiles/command_line.h"

#include <array>
#include <utility>

namespace corvanet::pxfiles {

namespace {

Parsed UsageError(std::string& error, std::string text) {
  error = std::move(text);
  return Parsed::kUsageError;
}

bool IsOption(std::string_view word) {
  return word == "-f" || word == "-r" || word == "-o" || word == "-h" || word == "--help";
}

}  // namespace

Parsed ParseCommandLine(int argc, const char* const* argv, Options& options, std::string& error) {
  std::string mode;
  struct Slot {
    std::string_view option;
    std::string* value;
    bool given = false;
  };
  std::array<Slot, 3> slots{
      {{"-f", &options.price_file}, {"-r", &mode}, {"-o", &options.output_folder}}};
  for (int i = 1; i < argc; ++i) {
    const std::string_view option = argv[i];
    if (option == "-h" || option == "--help") return Parsed::kHelp;
    Slot* slot = nullptr;
    for (Slot& candidate : slots) {
      if (candidate.option == option) slot = &candidate;
    }
    if (slot == nullptr) return UsageError(error, "unknown argument '" + std::string(option) + "'");
    if (slot->given) return UsageError(error, "option " + std::string(option) + " is given twice");
    if (i + 1 == argc || *argv[i + 1] == '\0') {
      return UsageError(error, "option " + std::string(option) + " needs a value");
    }
    *slot->value = argv[++i];
    // The batch lines carry paths without quotes, so a path with blanks arrives as several words:
    // the words up to the next option are one value, joined by single blanks again.
    while (i + 1 < argc && !IsOption(argv[i + 1])) *slot->value += std::string(" ") + argv[++i];
    slot->given = true;
  }
  for (const Slot& slot : slots) {
    if (!slot.given) return UsageError(error, "option " + std::string(slot.option) + " is missing");
  }
  if (mode != "fileReplace") {
    return UsageError(error, "-r takes only fileReplace, not '" + mode + "'");
  }
  return Parsed::kConvert;
}

}  // namespace corvanet::pxfiles
