#include "core/stats/statistic_choices.h"

#include <string>

#include "core/platform/field_reader.h"
#include "core/platform/text.h"
#include "core/state/log.h"

namespace corvanet {

namespace {

constexpr std::string_view kFilenameLengthItems[] = {
    "Use Issue Symbol",       "Use Issue Symbol - Statistic Name",
    "Limit to 8 Characters",  "Limit to 9 Characters",
    "Limit to 10 Characters", "Limit to 11 Characters",
    "Limit to 12 Characters", "Limit to 13 Characters",
    "Limit to 14 Characters", "Limit to 15 Characters"};
constexpr std::string_view kReplaceZeroItems[] = {"0", "0.0000001", "0.000001", "0.00001", "-1"};

}  // namespace

void LoadStatisticChoices(Session& session) {
  LogEntry(session, "LoadStatisticChoices");
  WindowState& ui = session.ui;
  ui.StatisticColumnItems.clear();
  const std::string path = ui.PathToLists + "Stats.csv";
  FieldReader reader;
  if (reader.Open(path)) {
    // One item per field, whether the file puts them on one line or one per line.
    std::string item;
    while (reader.ReadField(item)) ui.StatisticColumnItems.push_back(TrimCopy(item));
  } else {
    Log(session, "LoadStatisticChoices - cannot read " + path);
  }
  ui.MaxFilenameLengthItems.assign(std::begin(kFilenameLengthItems),
                                   std::end(kFilenameLengthItems));
  ui.ReplaceZeroValuesItems.assign(std::begin(kReplaceZeroItems), std::end(kReplaceZeroItems));
}

}  // namespace corvanet
