#include "core/indicators/symbol_datafile.h"

#include "core/download/datafile_names.h"
#include "core/platform/files.h"
#include "core/platform/paths.h"
#include "core/platform/text.h"

namespace corvanet {

std::string_view PeriodOfLetterOrName(std::string_view text) {
  for (std::string_view name : kPeriodNames) {
    if (EqualsIgnoreCase(text, name) || EqualsIgnoreCase(text, name.substr(0, 1))) return name;
  }
  return {};
}

std::string FindSymbolDatafile(const WindowState& ui, std::string_view period,
                               std::string_view symbol) {
  if (symbol.empty() || !IsSafeFileNamePart(symbol)) return {};
  const std::string listed = DestinationPathAhead(ui, period, symbol);
  if (FileExists(listed)) return listed;
  const std::string typed = ui.PathToDataFiles + Folder(period) + std::string(symbol) + ".csv";
  return FileExists(typed) ? typed : std::string();
}

}  // namespace corvanet
