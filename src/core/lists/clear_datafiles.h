#pragma once
// Emptying the data folder so that the next run fetches every datafile whole.
#include "core/state/session.h"

namespace corvanet {

// Deletes the datafiles directly in PathToDataFiles (those of the vendor "Other") and every .csv
// file in its Daily, Weekly, Monthly and Quarterly folders. Base/, other folders and any other file
// keep what they hold. A missing period folder is created (empty). A data folder that is missing,
// or that is the root, the home folder, the installation folder or one above it, is refused with a
// message. Where the shell has a trash the datafiles are moved there instead of deleted (the
// window's shell has one, the command line's not); StatusText says how many went and where.
// False when it refused or a file could not be removed.
bool ClearDataFiles_Click(Session& session);

}  // namespace corvanet
