#pragma once
#include <string>

#include "core/state/session.h"

namespace corvanet {

// Rewrites list files 1-5 in `lists_folder` without the symbols the master file at
// `masterfile_path` no longer holds, and reports the removed symbols in one message box.
void CheckLists(Session& session, const std::string& lists_folder,
                const std::string& masterfile_path);

}  // namespace corvanet
