#pragma once
#include <string>
#include <string_view>

#include "core/state/session.h"

namespace corvanet {

// The folder under the lists folder where a list is copied before the check removes anything
// from it.
inline constexpr std::string_view kListCopiesFolder = "Copies";

// Rewrites list files 1-5 in `lists_folder` without the symbols the master file at
// `masterfile_path` no longer holds, and reports the removed symbols in one message box. A list
// that loses a symbol is first copied, dated, into kListCopiesFolder, and the report names the
// copy.
void CheckLists(Session& session, const std::string& lists_folder,
                const std::string& masterfile_path);

}  // namespace corvanet
