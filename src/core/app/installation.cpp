#include "core/app/installation.h"

#include <filesystem>
#include <string>

#include "core/app/settings.h"
#include "core/platform/files.h"
#include "core/platform/paths.h"
#include "core/platform/resources.h"
#include "core/platform/text.h"
#include "core/state/log.h"
#include "core/ui/outside_programs.h"

namespace corvanet {

namespace {

// Everything but the sample datafiles, which go to the program folder.
bool WriteResources(const std::string& lists_folder) {
  bool ok = true;
  for (const EmbeddedFile& file : EmbeddedResources()) {
    if (StartsWith(file.relative_path, "SampleData/")) continue;
    std::string path = lists_folder;
    for (const char c : file.relative_path) path += c == '/' ? kSep : c;
    const auto slash = path.find_last_of(kSep);
    ok = CreateFolders(path.substr(0, slash)) && ok;
    ok = WriteWholeFile(path, file.content) && ok;
  }
  return ok;
}

}  // namespace

bool EnsureInstallation(Session& session) {
  const AppState& app = session.app;
  if (DirectoryExists(app.ProgramDirectory)) return true;
  WindowState& ui = session.ui;
  ui.PathToDataFiles = app.BaseDirectory + Folder("CSVFiles");
  ui.PathToLists = app.BaseDirectory + Folder("Lists");
  ui.PathToMSPxFiles = app.BaseDirectory + Folder("MetaStock");
  bool ok = true;
  for (const char* folder : {"Base", "Daily", "Weekly", "Monthly", "Quarterly"}) {
    ok = CreateFolders(ui.PathToDataFiles + folder) && ok;
  }
  ok = CreateFolders(ui.PathToLists) && ok;
  ok = WriteResources(ui.PathToLists) && ok;
  // The program folder is what marks an installation as made, so it comes last and goes again
  // when its settings file could not be written: the next start then tries afresh.
  ok = CreateFolders(app.ProgramDirectory) && ok;
  ok = EnsureSampleData(session) && ok;
  ok = WriteSettingsFile(session) && ok;
  if (!ok) {
    std::error_code ec;
    std::filesystem::remove_all(app.ProgramDirectory, ec);
  }
  return ok;
}

}  // namespace corvanet
