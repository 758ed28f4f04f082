#include "core/ui/help_pages.h"

#include <span>
#include <string>

#include "core/platform/paths.h"
#include "core/state/log.h"

namespace corvanet {

namespace {
const HelpButtonDef kHelpButtons[] = {
    {HelpButton::kSetUpOverview, "SetUpOverview", "Overview", "SetupOverview.htm"},
    {HelpButton::kGeneralSettings, "GeneralSettings", "General Settings", "GeneralSettings.htm"},
    {HelpButton::kDownloadSettings, "DownloadSettings", "Download File Settings",
     "DownloadSettings.htm"},
    {HelpButton::kFullDownloads, "FullDownloads", "Full Downloads",
     "DownloadSettings.htm#FullDownloads"},
    {HelpButton::kAutomatedDownloads, "AutomatedDownloads", "Automated Downloads",
     "AutomatedDownload.htm"},
    {HelpButton::kTestSettings, "TestSettings", "Test Your Settings", "TestSettings.htm"},
    {HelpButton::kSpecialFunctions, "SpecialFunctions", "Special Functions",
     "SpecialFunctions.htm"},
};
}  // namespace

std::span<const HelpButtonDef> HelpButtons() {
  return kHelpButtons;
}

void SetUpButtonFontsUnBold(Session& session) {
  LogEntry(session, "SetUpButtonFontsUnBold");
  for (const HelpButtonDef& def : kHelpButtons) {
    if (def.button != HelpButton::kSpecialFunctions) {
      session.ui.HelpButtonBold[static_cast<std::size_t>(def.button)] = false;
    }
  }
}

void HelpButton_Click(Session& session, HelpButton button) {
  const HelpButtonDef& def = kHelpButtons[static_cast<std::size_t>(button)];
  LogEntry(session, std::string(def.name) + "_Click");
  SetUpButtonFontsUnBold(session);
  session.ui.WebBrowser2Page = session.ui.PathToLists + Folder("Docs") + std::string(def.page);
  session.ui.HelpButtonBold[static_cast<std::size_t>(button)] = true;
}

void SetUpOverview_Click(Session& session) {
  HelpButton_Click(session, HelpButton::kSetUpOverview);
}

}  // namespace corvanet
