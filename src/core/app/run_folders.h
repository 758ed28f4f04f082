#pragma once
// The folders a download run writes to: made again at its start when a user deleted them by hand,
// and swept of the temporary files a killed run left behind.
#include <string>
#include <vector>

#include "core/state/session.h"

namespace corvanet {

// Makes the folders the run needs that are missing: the data folder, Base/, the ticked periods'
// folders, and the folders of the ticked price-file kinds and statistics. Returns one text per
// folder that could not be made, naming its path.
std::vector<std::string> MakeRunFolders(Session& session);

// Makes the lists folder again, with the help pages and Stats.csv it carries, when a user deleted
// it by hand. False (logged) when it could not be made.
bool MakeListFolder(Session& session);

// Removes the temporary files that a dead process left in every folder the program writes to
// (never those a living writer holds). Returns how many were removed.
int SweepTemporaryFiles(Session& session);

}  // namespace corvanet
