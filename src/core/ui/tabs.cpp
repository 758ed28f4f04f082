#include "core/ui/tabs.h"

#include "core/state/log.h"

namespace corvanet {

void ApplySpecialFunctionsTab(WindowState& ui) {
  const bool offered = ui.ImplementSpecialFunctions != 0;
  for (int i = 0; i < kSpecialFunctionsTab; ++i) {
    ui.Tabs[i].visible = true;
    ui.Tabs[i].enabled = true;
  }
  ui.Tabs[kSpecialFunctionsTab].visible = offered;
  ui.Tabs[kSpecialFunctionsTab].enabled = offered;
  if (!offered && ui.CurrentTab == kSpecialFunctionsTab) ui.CurrentTab = 0;
}

void SetTabs(Session& session) {
  LogEntry(session, "SetTabs");
  ApplySpecialFunctionsTab(session.ui);
}

void ImplementSpecialFunctions_Click(Session& session) {
  LogEntry(session, "ImplementSpecialFunctions_Click");
  WindowState& ui = session.ui;
  if (ui.ImplementSpecialFunctions != 0) {
    ui.Label25ButtonTextColour = true;
    ui.PathToMSPxFilesEmphasised = true;
    ui.BrowseToMSPxFilePath.visible = true;
  }
  ApplySpecialFunctionsTab(ui);
}

}  // namespace corvanet
