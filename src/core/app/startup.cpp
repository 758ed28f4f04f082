#include "core/app/startup.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <filesystem>

#include "core/app/download_run.h"
#include "core/app/installation.h"
#include "core/app/run_folders.h"
#include "core/app/settings.h"
#include "core/lists/download_lists.h"
#include "core/platform/field_reader.h"
#include "core/platform/files.h"
#include "core/platform/native_path.h"
#include "core/platform/paths.h"
#include "core/platform/process.h"
#include "core/platform/run_lock.h"
#include "core/platform/text.h"
#include "core/state/log.h"
#include "core/stats/statistic_choices.h"
#include "core/ui/help_pages.h"

namespace corvanet {

namespace {
constexpr std::string_view kEditionDirectory = "Rondex";
constexpr std::string_view kVersionText = "5.1";

// The installation root as an absolute folder text: start-up makes ProgramDirectory the current
// directory, after which a relative root would point somewhere else.
std::string AbsoluteFolder(const std::string& folder) {
  std::error_code ec;
  const std::filesystem::path absolute = std::filesystem::absolute(NativePath(folder), ec);
  if (ec) return WithTrailingSeparator(folder);
  return WithTrailingSeparator(Utf8Path(absolute.lexically_normal()));
}
// The text with its control characters shown as "?", fit for one line of a message.
std::string Printable(std::string text) {
  for (char& c : text) {
    if (HasControlCharacter(std::string_view(&c, 1))) c = '?';
  }
  return text;
}
}  // namespace

std::string DefaultBaseDirectory() {
  if (const char* env = std::getenv("CORVANET_BASE_DIR"); env != nullptr && *env != '\0') {
    return WithTrailingSeparator(env);
  }
  return SystemBaseDirectory();
}

int WholeNumberRead(std::string_view text) {
  double value = 0;
  if (!ParseNumber(text, value)) return 0;
  // A number read into a whole-number variable is rounded half to even, as the classic read
  // does: 3.6 gives 4 and 2.5 gives 2. Beyond the 16-bit range the read fails: no list.
  const double rounded = std::nearbyint(value);
  if (rounded < INT16_MIN || rounded > INT16_MAX) return 0;
  return static_cast<int>(rounded);
}

int ReadAndResetRunListNum(const std::string& path) {
  if (!FileExists(path)) return 0;
  FieldReader reader(path);
  std::string field;
  int number = reader.ReadField(field) ? WholeNumberRead(field) : 0;
  // "0 or less" is an interactive start; holding it as 0 keeps the closing question for it too.
  if (number < 0) number = 0;
  reader.Close();
  WriteWholeFile(path, "0\r\n");
  return number;
}

bool Form_Load(Session& session, const StartupOptions& options) {
  AppState& app = session.app;
  WindowState& ui = session.ui;
  app.LogDetail = "Not Set";
  app.StartDirectory =
      options.start_directory.empty() ? "" : WithTrailingSeparator(options.start_directory);
  app.BaseDirectory = AbsoluteFolder(options.base_directory);
  app.ProgramDirectory.clear();
  app.StartupProblem.clear();
  // Every path of the program starts with this one, and some go into batch and unit files.
  if (HasControlCharacter(app.BaseDirectory)) {
    app.StartupProblem = "the installation folder " + Printable(app.BaseDirectory) +
                         " holds a line break or another control character; choose another";
    return false;
  }
  // Only a start that can carry out the unattended run takes the number: any other would lose a
  // scheduled run without a word.
  app.RunListNum = options.may_run_unattended
                       ? ReadAndResetRunListNum(app.StartDirectory + "RunListNum.txt")
                       : options.list_to_run;
  ui.PathToDataFiles = app.BaseDirectory + Folder("CSVFiles");
  app.EditionDirectory = Folder(kEditionDirectory);
  app.VersionText = std::string(kVersionText);
  ui.WindowTitle = "Corvanet for Ovalith";
  ui.DisplayVersionNum.caption = "Version " + app.VersionText + " - For Ovalith Subscribers";
  app.ProgramDirectory = app.BaseDirectory + app.EditionDirectory;
  if (!EnsureInstallation(session)) {
    app.StartupProblem = "could not create the installation in " + app.ProgramDirectory;
    return false;
  }
  if (options.change_directory) {
    std::error_code ec;
    std::filesystem::current_path(NativePath(app.ProgramDirectory), ec);
  }
  // Start-up rewrites the log and, by the master file refresh, the lists: not while a run of
  // another process holds the installation, whose log and lists those are.
  RunLock lock;
  const bool installation_free =
      lock.AcquireUnlessHeld(app.ProgramDirectory, FormatTimeOfDay(session.clock.Now()));
  // The report shows the controls' design state. It goes beside the log in the program folder,
  // never into the folder the program was started from, which is the user's own.
  if (installation_free) WriteSettingsReport(session);
  app.CurrentListNumber = "0";
  ui.ProgressBar1.visible = false;
  LoadConfiguration_Click(session);
  if (installation_free) MakeListFolder(session);
  SetUpOverview_Click(session);
  LoadStatisticChoices(session);
  return true;
}

RunSummary AutomatedRuns(Session& session) {
  LogEntry(session, "AutomatedRuns");
  const int n = session.app.RunListNum;
  if (n < 1 || n > 7) return {};
  DownloadList_Click(session, n);
  return DownLoadButton_Click(session);
}

bool Form_Unload(Session& session) {
  if (session.app.RunListNum != 0) return false;
  // Edits of the list in hand would be lost without a word: the question names them too.
  const bool list_unsaved = DownloadListUnsaved(session);
  const std::string list = DownLoadType(session);
  const Answer answer = session.shell.MessageBox(
      list_unsaved ? "Save Corvanet settings and the changes to " + list + " before closing?"
                   : std::string("Save Corvanet settings before closing?"),
      "Save Dialog", Buttons::kYesNoCancel, Icon::kQuestion);
  switch (answer) {
    case Answer::kYes:
      SaveToINI_Click(session);
      Log(session, "Form_Unload - Settings saved");
      if (list_unsaved) {
        // Refused or not written, a message said why; the window stays open with the list.
        if (!DownloadListMayBeSaved(session) || !WriteDownloadList(session)) return true;
        Log(session, "Form_Unload - " + list + " saved");
      }
      session.shell.MessageBox(list_unsaved ? "Corvanet settings and " + list + " saved."
                                            : std::string("Corvanet settings saved."),
                               "Corvanet", Buttons::kOk, Icon::kNone);
      return false;
    case Answer::kCancel:
      Log(session, "Form_Unload - Exit canceled");
      return true;
    default:
      Log(session, "Form_Unload - Settings not saved");
      return false;
  }
}

bool Exit_Click(Session& session, int page) {
  LogEntry(session, "Exit" + std::to_string(page) + "_Click");
  return Form_Unload(session);
}

void CheckForUpdates_Click(Session& session) {
  LogEntry(session, "CheckForUpdates_Click");
  // The data service offers no program updates; the package the program came in does.
  session.shell.MessageBox("This is Corvanet " + session.ui.DisplayVersionNum.caption +
                               ".\rNew versions of the program come with its package: your "
                               "system's package manager installs them with its other updates."
                               "\rYour datafiles are brought up to date by each download.",
                           "Check For Updates", Buttons::kOk, Icon::kInformation);
}

}  // namespace corvanet
