#pragma once
// Which pages the tab strip offers, and the special-functions switch.
#include "core/state/session.h"

namespace corvanet {

// Tabs 0-3 always; tab 4 ("Special Functions") only when ImplementSpecialFunctions is ticked.
void SetTabs(Session& session);
// The same without the log line, for the settings reader.
void ApplySpecialFunctionsTab(WindowState& ui);
// Ticked: emphasise the MetaStock folder field, show its browse button and the tab. Unticked: only
// hide the tab (the emphasis and the button stay as they are).
void ImplementSpecialFunctions_Click(Session& session);

}  // namespace corvanet
