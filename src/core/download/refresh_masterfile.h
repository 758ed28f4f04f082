#pragma once
#include "core/app/session.h"

namespace corvanet {

// Fetches the data set's master file, installs it in BaseDirectory only when every line holds
// exactly one comma, then checks the download lists against it. A failed fetch or a refused file
// keeps the old master file. True when a new master file was installed.
bool RefreshMasterfile(Session& session);

}  // namespace corvanet
