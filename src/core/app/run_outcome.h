#pragma once
// The outcome of a run as the window shows it: the summary the command line prints, under a
// heading that names the list and says whether every file is up to date. The completion message
// only says that a run ended; this is where a failed run shows as failed.
#include "core/download/run_summary.h"
#include "core/state/session.h"

namespace corvanet {

// Fills RunOutcome, RunSummaryLines and RunFailed from the summary of a run of the current list.
// A run refused by its checks counts as failed: it updated nothing.
void ShowRunOutcome(Session& session, const RunSummary& summary);

// The download button and the unattended start, each followed by ShowRunOutcome. The unattended
// start shows no message box: each message is logged and listed under the run's result.
RunSummary DownloadAndShowOutcome(Session& session);
RunSummary AutomatedRunAndShowOutcome(Session& session);

}  // namespace corvanet
