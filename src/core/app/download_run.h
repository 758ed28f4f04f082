#pragma once
#include "core/download/run_summary.h"
#include "core/state/session.h"

namespace corvanet {

// The download button: checks, then every ticked period of the current list, then the closing
// steps. Returns what happened to each datafile.
RunSummary DownLoadButton_Click(Session& session);

}  // namespace corvanet
