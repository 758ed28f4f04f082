#pragma once
// Start-up, shut-down and unattended runs.
#include <string>
#include <string_view>

#include "core/download/run_summary.h"
#include "core/state/session.h"

namespace corvanet {

struct StartupOptions {
  std::string base_directory;    // the installation root, ending with a separator
  std::string start_directory;   // where RunListNum.txt is read; "" = the current directory
  bool change_directory = true;  // make ProgramDirectory the current directory (the real programs)
  // Whether this start can carry out an unattended run; only then is RunListNum.txt read and
  // reset. A command-line start given a command of its own leaves the file for the next start.
  bool may_run_unattended = true;
  // The list a start that may not run unattended goes on to run (the command line's `run N`), or
  // 0. Either way the list to run is known before the master file is fetched, so its update files
  // can be fetched beside it (see StartUpdateFilesOfList).
  int list_to_run = 0;
};

// The installation root where no --base-dir is given: env CORVANET_BASE_DIR, else $HOME/Tessaly/
// on POSIX and the Windows rule applied to the program's folder elsewhere.
std::string DefaultBaseDirectory();

// Reads the list number of an unattended start and resets the file to "0" at once, so a number
// starts exactly one run. A missing file is an interactive start (0); a text that is not a number
// counts as 0 too; a fraction is rounded as a whole-number read rounds it (3.6 gives 4).
int ReadAndResetRunListNum(const std::string& path);
// The whole-number read of a text: rounded half to even; 0 for no number or one beyond 16 bits.
int WholeNumberRead(std::string_view text);

// Puts the window into its first state, loads the settings and the master file, and leaves the
// choice between waiting for the user and an unattended run to the caller (RunListNum).
// False when start-up failed (an installation folder holding a control character, or one that
// could not be created); AppState::StartupProblem then says why.
bool Form_Load(Session& session, const StartupOptions& options);

// Runs list RunListNum (1-7) as if its buttons were clicked; any other number runs nothing.
// Settings are not saved afterwards.
RunSummary AutomatedRuns(Session& session);

// The closing question. Returns true when the window must stay open (Cancel).
bool Form_Unload(Session& session);
// The pages' Exit buttons: log their name, then close as Form_Unload does. True = stay open.
bool Exit_Click(Session& session, int page);

void CheckForUpdates_Click(Session& session);

}  // namespace corvanet
