#pragma once
// How many datafiles a run of the current list over the ticked periods will handle: the maximum of
// the progress bar and the number on the download button.
#include "core/state/session.h"

namespace corvanet {

// Records of the list's source times the ticked periods (a user list's five header records counted
// as records and taken off again), less the listed symbols a quarterly run skips. The run keeps its
// counters in 16 bits, so the total is held to 0..32767 (an overflow is logged). 0 when no list is
// loaded or its source cannot be read.
int CountRunDatafiles(Session& session);

}  // namespace corvanet
