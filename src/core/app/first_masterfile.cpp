#include "core/app/first_masterfile.h"

#include "core/download/refresh_masterfile.h"
#include "core/lists/download_lists.h"
#include "core/lists/masterfile.h"
#include "core/platform/files.h"
#include "core/state/log.h"

namespace corvanet {

bool MasterfileMissing(const Session& session) {
  return LogInEntered(session.ui) && !FileExists(MasterFilePath(session));
}

bool FetchMasterfile(Session& session) {
  LogEntry(session, "FetchMasterfile");
  WindowState& ui = session.ui;
  ui.StatusText = "Fetching the list of indexes and ETFs from the data service ...";
  session.NotifyObserver();
  SelectMasterfile(session);  // the data set and address as they stand now
  RefreshMasterfile(session);
  LoadMasterfile(session);
  if (ui.List5.size() == 0) {
    ui.StatusText =
        "The list of indexes and ETFs could not be fetched from the data service. Check the user "
        "name, password and Data Service Address, then click Reload Saved Settings.";
    return false;
  }
  ui.StatusText = "The list of indexes and ETFs was fetched: " + std::to_string(ui.List5.size()) +
                  " issue(s). Choose a download list under 'Download File Settings'.";
  return true;
}

std::string EmptyMasterListHint(const WindowState& ui) {
  if (ui.List5.size() != 0) return {};
  if (!LogInEntered(ui)) {
    return "This list comes from the data service: enter your user name and password under "
           "'General Settings' and click Save Settings.";
  }
  return "This list is empty: check the log-in and the Data Service Address under 'General "
         "Settings', then click Reload Saved Settings to fetch it.";
}

}  // namespace corvanet
