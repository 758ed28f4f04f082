#include "core/app/settings_buttons.h"

#include <string>
#include <string_view>

#include "core/app/settings.h"
#include "core/lists/download_lists.h"
#include "core/state/log.h"
#include "core/stats/statistic_catalogue.h"

namespace corvanet {

namespace {

constexpr std::string_view kRunWithBoxes[] = {"RunWithList1",     "RunWithList2", "RunWithList3",
                                              "RunWithList4",     "RunWithList5", "RunWithAllDaily",
                                              "RunWithAllPeriods"};
constexpr std::string_view kButtonNames[] = {
    "MakeList1StatFiles_Click",     "MakeList2StatFiles_Click", "MakeList3StatFiles_Click",
    "MakeList4StatFiles_Click",     "MakeList5StatFiles_Click", "MakeAllDailyStatFiles_Click",
    "MakeAllPeriodsStatFiles_Click"};

void SetAllBoxes(Session& session, int value) {
  for (const StatisticDef& statistic : StatisticCatalogue())
    SetCheck(session, statistic.name, value);
}

}  // namespace

bool SaveDownloadList_Click(Session& session) {
  LogEntry(session, "SaveDownloadList_Click");
  if (!DownloadListMayBeSaved(session)) return false;
  // The list file does not depend on the settings, so a refused settings save does not stop it.
  SaveToINI_Click(session);
  return WriteDownloadList(session);
}

void SelectAllStatFiles_Click(Session& session) {
  LogEntry(session, "SelectAllStatFiles_Click");
  SetAllBoxes(session, 1);
}

void ClearAllStatFiles_Click(Session& session) {
  LogEntry(session, "ClearAllStatFiles_Click");
  SetAllBoxes(session, 0);
}

void MakeListStatFiles_Click(Session& session, int list, StatFilesSummary* summary) {
  if (list < 1 || list > 7) return;
  LogEntry(session, kButtonNames[list - 1]);
  session.app.CurrentListNumber = std::to_string(list);
  session.ui.SelectedList = list;
  SetCheck(session, kRunWithBoxes[list - 1], 1);
  RunSingleStatFilesNow(session, summary);
}

}  // namespace corvanet
