#pragma once
// Buttons whose work goes through the settings: they save them first, or tick boxes as a user
// would, so that each box's change handler runs.
#include "core/state/session.h"
#include "core/stats/single_stat_files.h"

namespace corvanet {

// Saves the settings, then the list file. False when a check refused the save or the list file
// could not be written; a message says which. The list is saved even when the settings are not.
bool SaveDownloadList_Click(Session& session);

// "Select All" / "Clear All": the 34 boxes in catalogue order, each through its change handler.
void SelectAllStatFiles_Click(Session& session);
void ClearAllStatFiles_Click(Session& session);

// The list buttons of the statistics page (MakeList1StatFiles_Click ... MakeList5StatFiles_Click
// for 1-5, MakeAllDailyStatFiles_Click for 6, MakeAllPeriodsStatFiles_Click for 7): select the
// list, tick its RunWith box and make the files now.
void MakeListStatFiles_Click(Session& session, int list, StatFilesSummary* summary = nullptr);

}  // namespace corvanet
