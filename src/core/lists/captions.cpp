#include "core/lists/captions.h"

#include "core/lists/download_lists.h"
#include "core/lists/masterfile.h"
#include "core/lists/run_total.h"
#include "core/platform/text.h"
#include "core/state/log.h"

namespace corvanet {

namespace {

// Sizes of the save button in twips: one line beside the list buttons, or the wide two-line button
// that stands in for them when a full list is shown.
constexpr int kSaveButtonWidth = 2535;
constexpr int kSaveButtonHeight = 255;
constexpr int kFullListSaveButtonWidth = 5175;
constexpr int kFullListSaveButtonHeight = 615;

}  // namespace

void ChangeCaptionsOnButtons(Session& session) {
  LogEntry(session, "ChangeCaptionsOnButtons");
  SelectMasterfile(session);
  // NumberText writes the leading blank the captions rely on: "Update 57 Datafile(s) ...".
  const std::string count = NumberText(CountRunDatafiles(session));
  const std::string type = DownLoadType(session);
  const int n = CurrentListNumber(session);
  WindowState& ui = session.ui;

  ui.DownloadProgressFrame.caption = "Update Progress";
  ui.Frame2.caption = "Start Download";
  const std::string update_caption = "Update" + count + " Datafile(s) On " + type + " Now";
  const bool user_list = n <= 5;
  ui.MoveAllToDownloadList.visible = user_list;
  ui.LoadDownloadFile.visible = user_list;
  ui.ClearList.visible = user_list;
  // A full list fixes its own periods, so its boxes cannot be changed while it is shown.
  ui.PeriodBoxesEnabled = user_list;
  if (user_list) {
    ui.DownLoadButton.caption = update_caption;
    ui.SaveDownloadList.caption = "Save " + type + " Now";
    ui.SaveDownloadList.width = kSaveButtonWidth;
    ui.SaveDownloadList.height = kSaveButtonHeight;
  } else {
    ui.SaveDownloadList.caption = "Save " + type + " Download Settings";
    ui.SaveDownloadList.width = kFullListSaveButtonWidth;
    ui.SaveDownloadList.height = kFullListSaveButtonHeight;
    const bool force_full =
        (n == 6 && ui.AllDailyForceFull != 0) || (n == 7 && ui.AllPeriodsForceFull != 0);
    ui.DownLoadButton.caption =
        force_full ? "Force a Full Download On" + count + " Datafile(s) On " + type + " List"
                   : update_caption;
  }
  ui.MoveAllToDownloadList.caption = "Move All To " + type;
  ui.LoadDownloadFile.caption = "Restore " + type;
  ui.ClearList.caption = "Clear " + type;
}

}  // namespace corvanet
