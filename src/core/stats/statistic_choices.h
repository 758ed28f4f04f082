#pragma once
#include <string>
#include <string_view>

#include "core/state/session.h"

namespace corvanet {

// Fills the drop-downs at start-up: the column choices from PathToLists + "Stats.csv", then the
// file-name and zero-replacement choices.
void LoadStatisticChoices(Session& session);

// Whether `key` is one of the 18 column drop-downs of the user-defined price files (Stat1File1 ...
// Stat6File3).
bool IsStatisticColumnSetting(std::string_view key);
// Why `value` cannot be chosen for such a drop-down: it is not among the names Stats.csv offers
// (the message names that file). "" when it is one of them.
std::string StatisticChoiceProblem(const Session& session, std::string_view value);

}  // namespace corvanet
