#pragma once
// A new installation has no master file until something fetches it (a run, a reload, the next
// start), so a user who has just saved the log-in would face an empty list of indexes with no word
// why. Saving the log-in fetches it at once; an empty list says what it needs.
#include <string>

#include "core/platform/http.h"
#include "core/state/session.h"

namespace corvanet {

// The log-in is entered and the data set's master file is not on disk.
bool MasterfileMissing(const Session& session);
// Fetches the data set's master file and shows it in the master list, saying in StatusText that it
// is being fetched and then how it went. It waits on the service: front ends with a window run it
// off the window's thread. True when the master list was filled.
bool FetchMasterfile(Session& session);
// What the status line says when the master file could not be had: what the service answered and
// that Save Settings tries again.
std::string MasterfileNotFetchedText(const FetchResult& answer);
// What the user can do about an empty master list; "" when it holds issues.
std::string EmptyMasterListHint(const WindowState& ui);

}  // namespace corvanet
