#include "pxfiles/command_line.h"

#include <array>
#include <utility>

namespace corvanet::pxfiles {

namespace {

Parsed UsageError(std::string& error, std::string text) {
  error = std::move(text);
  return Parsed::kUsageError;
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
  // Help only when it is all there is: among the converter's options any word is a value, so no
  // path can be taken for an option.
  if (argc == 2 && (std::string_view(argv[1]) == "-h" || std::string_view(argv[1]) == "--help")) {
    return Parsed::kHelp;
  }
  for (int i = 1; i < argc; ++i) {
    const std::string_view option = argv[i];
    Slot* slot = nullptr;
    for (Slot& candidate : slots) {
      if (candidate.option == option) slot = &candidate;
    }
    if (slot == nullptr) return UsageError(error, "unknown argument '" + std::string(option) + "'");
    if (slot->given) return UsageError(error, "option " + std::string(option) + " is given twice");
    if (i + 1 == argc || *argv[i + 1] == '\0') {
      return UsageError(error, "option " + std::string(option) + " needs a value");
    }
    // The word after an option is its value, whatever it looks like.
    *slot->value = argv[++i];
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
