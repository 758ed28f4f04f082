#include "core/lists/clear_datafiles.h"

#include <array>
#include <string>

#include "core/app/log.h"
#include "core/platform/files.h"
#include "core/platform/paths.h"

namespace corvanet {

void ClearDataFiles_Click(Session& session) {
  LogEntry(session, "ClearDataFiles_Click");
  const std::string& data_folder = session.ui.PathToDataFiles;
  // An empty text would name the current folder, which holds the settings file.
  if (data_folder.empty() || !DirectoryExists(data_folder)) {
    Log(session, "ClearDataFiles_Click - the data folder \"" + data_folder +
                     "\" does not exist; nothing cleared");
    return;
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
  for (const std::string& folder : folders) {
    if (!DeleteFilesIn(folder)) {
      Log(session, "ClearDataFiles_Click - not every file in " + folder + " could be deleted");
    }
  }
}

}  // namespace corvanet
