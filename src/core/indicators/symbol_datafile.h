#pragma once
// Which datafile a front end charts or tabulates for a symbol a user names.
#include <string>
#include <string_view>

#include "core/state/window_state.h"

namespace corvanet {

// "Daily" for "D", "d", "Daily" or "daily", and so on for the four periods; "" for anything else.
std::string_view PeriodOfLetterOrName(std::string_view text);

// The datafile of `symbol` in `period` ("Daily" ...) as a run names it: the listed symbol in the
// vendor's form, else, for a symbol typed in the file's own form, that name. "" when the symbol
// cannot be a file name or neither file exists.
std::string FindSymbolDatafile(const WindowState& ui, std::string_view period,
                               std::string_view symbol);

}  // namespace corvanet
