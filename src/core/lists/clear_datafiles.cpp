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

std::string ClearedText(int trashed, const std::string& trash_folder, int deleted,
                        const std::string& data_folder) {
  if (trashed == 0 && deleted == 0) return "There were no datafiles to clear in " + data_folder;
  std::string text;
  if (trashed > 0) {
    text = std::to_string(trashed) + " datafile(s) of " + data_folder +
           " were moved to the trash (" + trash_folder + "), where they can be restored.";
  }
  if (deleted > 0) {
    text += (text.empty() ? "" : " ") + std::to_string(deleted) + " datafile(s) of " + data_folder +
            " were deleted" +
            (trashed > 0 ? " (the trash took no more)." : ": there is no trash to move them to.");
  }
  return text;
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
  // Where the desktop has a trash the datafiles go there, so a click too many costs nothing; the
  // empty temp.csv files are ours and are simply deleted.
  int trashed = 0;
  int deleted = 0;
  std::string trash_folder;
  const auto remove = [&](const std::string& path) {
    std::string now_at;
    if (!EndsWithIgnoreCase(path, "temp.csv") && session.shell.MoveToTrash(path, now_at)) {
      ++trashed;
      if (trash_folder.empty()) trash_folder = now_at.substr(0, now_at.find_last_of("/\\") + 1);
      return true;
    }
    const bool gone = FileExists(path) && RemoveFile(path);
    if (gone && !EndsWithIgnoreCase(path, "temp.csv")) ++deleted;
    return gone || !FileExists(path);
  };
  bool ok = true;
  for (std::size_t i = 0; i < folders.size(); ++i) {
    if (!RemoveFilesIn(folders[i], i == 0 ? &IsDataFolderDatafile : &IsPeriodDatafile, remove)) {
      Log(session, "ClearDataFiles_Click - not every file in " + folders[i] + " could be deleted");
      ok = false;
    }
  }
  session.ui.StatusText = ClearedText(trashed, trash_folder, deleted, data_folder);
  Log(session, "ClearDataFiles_Click - " + session.ui.StatusText);
  return ok;
}

}  // namespace corvanet
