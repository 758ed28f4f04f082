#include "core/ui/outside_programs.h"

#include <cstdlib>
#include <filesystem>

#include "core/platform/files.h"
#include "core/platform/paths.h"
#include "core/platform/process.h"
#include "core/platform/resources.h"
#include "core/platform/text.h"
#include "core/state/log.h"

namespace corvanet {

namespace {

constexpr std::string_view kSampleFolder = "SampleData/";

// The user's desktop folder: XDG_DESKTOP_DIR when set, else Desktop in the home folder.
std::string DesktopFolder() {
  if (const char* xdg = std::getenv("XDG_DESKTOP_DIR"); xdg != nullptr && *xdg != '\0') {
    return WithTrailingSeparator(xdg);
  }
  const char* home = std::getenv("HOME");
  return WithTrailingSeparator(home != nullptr ? home : ".") + Folder("Desktop");
}

// A desktop entry's Exec value: the path quoted, with the characters the format escapes.
std::string QuotedExec(const std::string& path) {
  std::string quoted = "\"";
  for (const char c : path) {
    if (c == '"' || c == '`' || c == '$' || c == '\\') quoted += '\\';
    if (c == '%') quoted += '%';  // a field code otherwise
    quoted += c;
  }
  return quoted + '"';
}

}  // namespace

void Help_Click(Session& session) {
  LogEntry(session, "Help_Click");
  const std::string log = session.app.ProgramDirectory + "MSXlog.txt";
  if (!FileExists(log)) {
    session.shell.Notify("The MetaStock converter has not written its log yet.\r(" + log + ")");
    return;
  }
  session.shell.OpenDocument(log);
}

void OpenMetaStock_Click(Session& session) {
  LogEntry(session, "OpenMetaStock_Click");
  if (session.shell.StartProgram("Mswin")) return;
  Log(session, "OpenMetaStock_Click - no program Mswin");
  session.shell.Notify(
      "MetaStock could not be started: no program named \"Mswin\" was found on this computer.");
}

std::string SampleDataFolder(const Session& session) {
  return session.app.ProgramDirectory + std::string(kSampleFolder);
}

bool EnsureSampleData(const Session& session) {
  const std::string folder = SampleDataFolder(session);
  if (DirectoryExists(folder)) return true;
  if (!CreateFolders(folder)) return false;
  bool ok = true;
  for (const EmbeddedFile& file : EmbeddedResources()) {
    if (!StartsWith(file.relative_path, kSampleFolder)) continue;
    ok = WriteWholeFile(folder + std::string(file.relative_path.substr(kSampleFolder.size())),
                        file.content) &&
         ok;
  }
  return ok;
}

void OpenSampleDirectory_Click(Session& session) {
  LogEntry(session, "OpenSampleDirectory_Click");
  if (!EnsureSampleData(session)) {
    Log(session, "OpenSampleDirectory_Click - cannot lay out " + SampleDataFolder(session));
  }
  const std::string chosen = session.shell.ChooseFile(SampleDataFolder(session), "*.csv");
  if (!chosen.empty()) session.shell.OpenDocument(chosen);
}

std::string ShortcutPath() {
  return DesktopFolder() + "Palvery.desktop";
}

std::string ShortcutIconPath(const Session& session) {
  return session.app.ProgramDirectory + "corvanet.svg";
}

// The program's icon beside the installation's own files, where the shortcut can name it wherever
// the program was built or installed.
bool EnsureShortcutIcon(const Session& session) {
  const std::string path = ShortcutIconPath(session);
  if (FileExists(path)) return true;
  for (const EmbeddedFile& file : EmbeddedResources()) {
    if (file.relative_path == "desktop/corvanet.svg") return WriteWholeFile(path, file.content);
  }
  return false;
}

bool CreateShortcut_Click(Session& session) {
  LogEntry(session, "CreateShortcut_Click");
  const std::string path = ShortcutPath();
  if (!EnsureShortcutIcon(session)) {
    Log(session, "CreateShortcut_Click - cannot lay out " + ShortcutIconPath(session));
  }
  // Desktop entries are read line by line up to LF; a CR would become part of each value.
  const std::string entry =
      "[Desktop Entry]\n"
      "Type=Application\n"
      "Name=Corvanet\n"
      "Comment=Keeps market-breadth datafiles current\n"
      "Exec=" +
      QuotedExec(ExecutableFolder() + "corvanet") + " --base-dir " +
      QuotedExec(session.app.BaseDirectory) +
      "\n"
      "Icon=" +
      ShortcutIconPath(session) +
      "\n"
      "Terminal=false\n"
      "Categories=Office;Finance;\n";
  if (!DirectoryExists(DesktopFolder()) || !WriteWholeFile(path, entry)) {
    Log(session, "CreateShortcut_Click Error - cannot write " + path);
    session.shell.Notify("The desktop shortcut could not be written to " + path + ".");
    return false;
  }
  // Desktops start only entries marked executable from the desktop folder.
  std::error_code ec;
  std::filesystem::permissions(path,
                               std::filesystem::perms::owner_exec |
                                   std::filesystem::perms::group_exec |
                                   std::filesystem::perms::others_exec,
                               std::filesystem::perm_options::add, ec);
  // Nothing opens to show that it worked, so say where it went.
  session.ui.StatusText = "A shortcut to Corvanet was put on your desktop: " + path;
  return true;
}

void GoToURL(Session& session, const std::string& address) {
  LogEntry(session, "GoToURL");
  session.shell.OpenDocument(address);  // a failure to open is ignored
}

}  // namespace corvanet
