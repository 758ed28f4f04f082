#pragma once
#include "core/state/session.h"

namespace corvanet {

// Fills the drop-downs at start-up: the column choices from PathToLists + "Stats.csv", then the
// file-name and zero-replacement choices.
void LoadStatisticChoices(Session& session);

}  // namespace corvanet
