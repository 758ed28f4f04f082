#pragma once
// The list buttons follow the selected download list: their captions, which of them are offered,
// the size of the save button and whether the period boxes may be changed.
#include "core/state/session.h"

namespace corvanet {

// Reloads the master list (the data set may have changed) and recomputes the download page's
// buttons for CurrentListNumber, counting the datafiles a run of the list would handle.
void ChangeCaptionsOnButtons(Session& session);

}  // namespace corvanet
