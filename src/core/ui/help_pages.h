#pragma once
// The setup page's help buttons and the pages they show.
#include <span>
#include <string_view>

#include "core/state/session.h"

namespace corvanet {

enum class HelpButton {
  kSetUpOverview,
  kGeneralSettings,
  kDownloadSettings,
  kFullDownloads,
  kAutomatedDownloads,
  kTestSettings,
  kSpecialFunctions,
};

struct HelpButtonDef {
  HelpButton button;
  std::string_view name;  // control name, also the log text's stem
  std::string_view caption;
  std::string_view page;  // below PathToLists + "Docs/"
};

std::span<const HelpButtonDef> HelpButtons();

// Sets six of the seven help buttons to normal weight; "Special Functions" is left out, so once
// clicked it stays bold.
void SetUpButtonFontsUnBold(Session& session);
// A help button was clicked: un-bold the others, show its page in the setup browser, bold itself.
void HelpButton_Click(Session& session, HelpButton button);
void SetUpOverview_Click(Session& session);

}  // namespace corvanet
