#include "core/app/installation.h"

#include <string>

#include "core/app/settings.h"
#include "core/platform/files.h"
#include "core/platform/paths.h"
#include "core/platform/resources.h"
#include "core/platform/text.h"
#include "core/state/log.h"
#include "core/ui/outside_programs.h"

namespace corvanet {

// Everything but the sample datafiles, which go to the program folder.
bool WriteListFolderFiles(const std::string& lists_folder, bool only_missing) {
  bool ok = true;
  for (const EmbeddedFile& file : EmbeddedResources()) {
    if (StartsWith(file.relative_path, "SampleData/")) continue;
    std::string path = lists_folder;
    for (const char c : file.relative_path) path += c == '/' ? kSep : c;
    if (only_missing && FileExists(path)) continue;
    const auto slash = path.find_last_of(kSep);
    ok = CreateFolders(path.substr(0, slash)) && ok;
    ok = WriteWholeFile(path, file.content) && ok;
  }
  return ok;
}

std::string DefaultFolder(const Session& session, std::string_view key) {
  const std::string& base = session.app.BaseDirectory;
  if (key == "PathToDataFiles") return base + Folder("CSVFiles");
  if (key == "PathToLists") return base + Folder("Lists");
  if (key == "PathToMSPxFiles") return base + Folder("MetaStock");
  return {};
}

bool EnsureInstallation(Session& session) {
  const AppState& app = session.app;
  if (FileExists(SettingsFilePath(session))) return true;
  WindowState& ui = session.ui;
  ui.PathToDataFiles = DefaultFolder(session, "PathToDataFiles");
  ui.PathToLists = DefaultFolder(session, "PathToLists");
  ui.PathToMSPxFiles = DefaultFolder(session, "PathToMSPxFiles");
  bool ok = true;
  for (const char* folder : {"Base", "Daily", "Weekly", "Monthly", "Quarterly"}) {
    ok = CreateFolders(ui.PathToDataFiles + folder) && ok;
  }
  ok = CreateFolders(ui.PathToLists) && ok;
  ok = WriteListFolderFiles(ui.PathToLists, false) && ok;
  // The settings file is what marks an installation as made, so it comes last and goes again when
  // anything else failed: the next start then tries afresh. The program folder stays, since an
  // installer may have put the programs in it.
  ok = CreateFolders(app.ProgramDirectory) && ok;
  ok = EnsureSampleData(session) && ok;
  ok = WriteSettingsFile(session) && ok;
  if (!ok) RemoveFile(SettingsFilePath(session));
  return ok;
}

}  // namespace corvanet
