#pragma once
// Emptying the data folder so that the next run fetches every datafile whole.
#include "core/app/session.h"

namespace corvanet {

// Deletes every file directly in PathToDataFiles and in its Daily, Weekly, Monthly and Quarterly
// folders. Base/ and any other folder below the data folder keep their files. A missing period
// folder is created (empty); a missing data folder is left missing.
void ClearDataFiles_Click(Session& session);

}  // namespace corvanet
