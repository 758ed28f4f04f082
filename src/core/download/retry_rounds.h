#pragma once
// Retries of what failed for a reason that may pass, after the list has been walked: the number of
// rounds the "Retries" box gives, a growing pause between them (1 s, 2 s, 4 s ..., longer when the
// service asked for it with Retry-After), each round in list order.
#include "core/download/run_summary.h"
#include "core/state/session.h"

namespace corvanet {

// Rounds of retries for the failures `summary` holds as transient. The datafiles and update files
// a round brings in leave the summary's failures; what still fails stays there as it was reported.
void RetryTransientFailures(Session& session, RunSummary& summary);

// The rounds of retries a run will make (the "Retries" box, bounded).
int RetryRoundsWanted(const WindowState& ui);

}  // namespace corvanet
