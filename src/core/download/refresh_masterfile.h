#pragma once
#include <string>

#include "core/platform/http.h"
#include "core/state/session.h"

namespace corvanet {

// Fetches the data set's master file, installs it in BaseDirectory only when IsValidMasterfile
// accepts it, then checks the download lists against it. A failed fetch or a refused file keeps
// the old master file. True when a new master file was installed; `answer`, when given, gets how
// the service answered the fetch.
bool RefreshMasterfile(Session& session, FetchResult* answer = nullptr);

// Every line holds exactly one comma, and the field reader takes from each exactly one record of
// a name and a non-empty symbol; at least one line. False with `problem` naming the first fault.
bool IsValidMasterfile(const std::string& path, std::string& problem);

}  // namespace corvanet
