#include "core/lists/clear_datafiles.h"

#include <array>
#include <string>

#include "core/platform/files.h"
#include "core/platform/paths.h"
#include "core/platform/text.h"
#include "core/state/log.h"

namespace corvanet {

namespace {

bool EndsWithIgnoreCase(std::string_view text, std::string_view end) {
  return text.size() >= end.size() && EqualsIgnoreCase(text.substr(text.size() - end.size()), end);
}

// In a period folder every .csv file is a datafile the run wrote (or the empty temp.csv).
bool IsPeriodDatafile(std::string_view name) {
  return EndsWithIgnoreCase(name, ".csv");
}

// The data folder itself holds the datafiles of the vendor "Other" and the temp.csv of step one;
// anything else there (a master file, the user's own papers) is not ours to delete.
bool IsDataFolderDatafile(std::string_view name) {
  return EndsWithIgnoreCase(name, "-CompositeStats.csv") || EqualsIgnoreCase(name, "temp.csv");
}

}  // namespace

bool ClearDataFiles_Click(Session& session) {
  LogEntry(session, "ClearDataFiles_Click");
  const std::string& data_folder = session.ui.PathToDataFiles;
  const std::string off_limits = ProtectedFolderReason(data_folder, session.app.BaseDirectory);
  if (!off_limits.empty()) {
    const std::string text = "Datafiles were not cleared: the data folder \"" + data_folder +
                             "\" is " + off_limits + ".";
    Log(session, "ClearDataFiles_Click - " + text);
    session.shell.Notify(text);
    return false;
  }
  if (!DirectoryExists(data_folder)) {
    const std::string text =
        "Datafiles were not cleared: the data folder \"" + data_folder + "\" does not exist.";
    Log(session, "ClearDataFiles_Click - " + text);
    session.shell.Notify(text);
    return false;
  }
  const std::array<std::string, 5> folders{
      data_folder, data_folder + Folder("Daily"), data_folder + Folder("Weekly"),
      data_folder + Folder("Monthly"), data_folder + Folder("Quarterly")};
  // An empty file first, so that every folder has something for the delete to find.
  for (const std::string& folder : folders) {
    if (!DirectoryExists(folder)) {
      Log(session, "ClearDataFiles_Click - " + folder + " was missing and is created");
      if (!CreateFolder(folder)) Log(session, "ClearDataFiles_Click - cannot create " + folder);
    }
    if (!TouchFile(folder + "temp.csv")) {
      Log(session, "ClearDataFiles_Click - cannot create " + folder + "temp.csv");
    }
  }
  bool ok = true;
  for (std::size_t i = 0; i < folders.size(); ++i) {
    if (!DeleteFilesIn(folders[i], i == 0 ? &IsDataFolderDatafile : &IsPeriodDatafile)) {
      Log(session, "ClearDataFiles_Click - not every file in " + folders[i] + " could be deleted");
      ok = false;
    }
  }
  return ok;
}

}  // namespace corvanet
