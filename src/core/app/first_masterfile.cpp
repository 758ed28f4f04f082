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
  FetchResult answer;
  RefreshMasterfile(session, nullptr, &answer);
  LoadMasterfile(session);
  if (ui.List5.size() == 0) {
    ui.StatusText = MasterfileNotFetchedText(answer);
    return false;
  }
  ui.StatusText = "The list of indexes and ETFs was fetched: " + std::to_string(ui.List5.size()) +
                  " issue(s). Choose a download list under 'Download File Settings'.";
  return true;
}

std::string MasterfileNotFetchedText(const FetchResult& answer) {
  std::string why;
  if (answer.status == FetchStatus::kHttpError &&
      (answer.http_status == 401 || answer.http_status == 403)) {
    return "The list of indexes and ETFs could not be fetched: the data service refused the user "
           "name and password. Correct them and click Save Settings to try again.";
  }
  if (answer.status == FetchStatus::kUntrustedCertificate) {
    return "The list of indexes and ETFs could not be fetched: " + answer.Describe() +
           ". Then click Save Settings to try again.";
  }
  if (answer.status == FetchStatus::kCouldNotConnect || answer.status == FetchStatus::kTimedOut) {
    why = ": the data service could not be reached at the Data Service Address";
  } else if (answer.status == FetchStatus::kHttpError) {
    why = ": the data service answered HTTP " + std::to_string(answer.http_status);
  } else if (answer.ok()) {
    why = ": the data service sent a list that is not a list of indexes and ETFs";
  }
  // Reloading the saved settings would bring back what failed; saving what is typed tries again.
  return "The list of indexes and ETFs could not be fetched" + why +
         ". Check the user name, password and Data Service Address, correct what is wrong and "
         "click Save Settings to try again.";
}

std::string EmptyMasterListHint(const WindowState& ui) {
  if (ui.List5.size() != 0) return {};
  if (!LogInEntered(ui)) {
    return "This list comes from the data service: enter your user name and password under "
           "'General Settings' and click Save Settings.";
  }
  // A data set just chosen has its own list: saving fetches it, where a reload would undo the
  // choice.
  return "This list is empty: check the log-in, the data set and the Data Service Address under "
         "'General Settings', then click Save Settings to fetch it.";
}

}  // namespace corvanet
