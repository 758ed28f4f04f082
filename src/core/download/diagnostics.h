#pragma once
// Two utilities kept for support sessions; the run itself does not call them.
#include <string>

#include "core/state/session.h"

namespace corvanet {

// Deletes PathToDataFiles + DataPeriod folder + `file_name`; a missing file is no error.
void DeleteDestinationFile(Session& session, const std::string& file_name);
// Shows the data set's address (DataSetURL, trimmed) in a message box and logs it.
void SetDownloadURLPath(Session& session);

}  // namespace corvanet
