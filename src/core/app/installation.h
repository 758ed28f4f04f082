#pragma once
#include "core/state/session.h"

namespace corvanet {

// A new installation: when ProgramDirectory does not exist, create it with a Rondex.ini of working
// defaults, the data folder (CSVFiles/ with Base/ and the four period folders) and the lists folder
// with the help pages and Stats.csv. False when something could not be created.
bool EnsureInstallation(Session& session);

}  // namespace corvanet
