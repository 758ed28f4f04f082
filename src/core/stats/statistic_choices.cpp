#include "core/stats/statistic_choices.h"

#include <algorithm>
#include <string>
#include <vector>

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

bool IsStatisticColumnSetting(std::string_view key) {
  return key.size() == 10 && key.substr(0, 4) == "Stat" && key[4] >= '1' && key[4] <= '6' &&
         key.substr(5, 4) == "File" && key[9] >= '1' && key[9] <= '3';
}

std::string StatisticChoiceProblem(const Session& session, std::string_view value) {
  const std::vector<std::string>& items = session.ui.StatisticColumnItems;
  if (std::find(items.begin(), items.end(), value) != items.end()) return {};
  const std::string source = session.ui.PathToLists + "Stats.csv";
  if (items.empty()) {
    return "the column names come from " + source + ", which could not be read";
  }
  return "the column names come from " + source + ", which does not list it (it lists " +
         std::to_string(items.size()) + " names, such as " + items.front() +
         (items.size() > 1 ? ", " + items[1] : std::string()) + ")";
}

}  // namespace corvanet
