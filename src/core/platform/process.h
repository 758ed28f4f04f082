#pragma once
// Starting other programs: the converter batch files, and programs found on the PATH.
#include <string>
#include <string_view>
#include <vector>

namespace corvanet {

// A batch file started with no window. The process is kept as a child so that a wait on the batch's
// flag file can tell when the batch has ended without setting it.
class BatchProcess {
 public:
  BatchProcess() = default;
  explicit BatchProcess(long id) : id_(id) {}
  bool started() const { return id_ > 0 || ended_; }
  // False once the process has ended (it is then reaped), or when none was started.
  bool Running();
  // Marks a batch that a test shell only pretended to start as already ended.
  static BatchProcess Ended() {
    BatchProcess batch;
    batch.ended_ = true;
    return batch;
  }

 private:
  long id_ = 0;
  bool ended_ = false;
};

// `argument` written for a batch line so that the batch runner hands it to the program as one
// argument, exactly as it is, whatever it holds (blanks, quotes, "$", "%", "&", ";"). On POSIX it
// is put in single quotes; on Windows in double quotes, with "%" doubled.
std::string QuoteBatchArgument(std::string_view argument);

// Starts a batch file with no window and without waiting for it. On POSIX it runs under `sh` in
// `working_folder`: each line (CR LF or LF) is read with the shell's quoting and run as one
// command, with wildcards off (lines are written with QuoteBatchArgument, so nothing else in them
// is expanded); `Call` is a function that runs its arguments (so "Call Complete.exe" works);
// `program_folder` comes first on PATH, where the converter helpers are found; `environment`
// ("NAME=value") is added to the child's. Its output goes nowhere. `batch_file` is relative to
// `working_folder` or absolute.
BatchProcess StartHiddenBatch(const std::string& batch_file, const std::string& working_folder,
                              const std::string& program_folder,
                              const std::vector<std::string>& environment = {});

// Why the converter helpers in `program_folder` (or further on the PATH, as the batch runner looks
// for them) cannot run a batch: PxFiles or Complete.exe not found, or PxFiles not answering a call
// for its usage with its usage and status 0. "" when they can.
std::string ConverterProblem(const std::string& program_folder);

// Starts a program found on the PATH by its name, detached, with no arguments. False when no such
// program exists or it could not be started.
bool StartProgram(const std::string& name);

// A command line's word as Windows programs read it back (CommandLineToArgvW, the C runtime):
// quoted when it holds a blank, a tab or a quote, inner quotes and the backslashes before them
// escaped.
std::string QuotedForCommandLine(std::string_view word);

// The folder of the running executable, with a trailing separator; empty when unknown.
std::string ExecutableFolder();
// The user's home folder ($HOME on POSIX, %USERPROFILE% on Windows) with a trailing separator;
// empty when unknown.
std::string HomeFolder();
// The installation's root when neither --base-dir nor CORVANET_BASE_DIR names one: $HOME/Tessaly/
// on POSIX; on Windows the first two levels of the program's folder ("C:\Tessaly\" for
// "C:\Tessaly\Rondex\corvanet-cli.exe"), wherever the installer put it.
std::string SystemBaseDirectory();
// That rule in a few words, for a help text: "~/Tessaly", or Windows' rule.
extern const char* const kSystemBaseDirectoryRule;
// Where the converter helpers (PxFiles, Complete.exe) are: CORVANET_HELPER_DIR when set, else the
// installed helper folder (libexec/corvanet beside the program's bin folder) when it holds them,
// else the running executable's folder.
std::string HelperFolder();

}  // namespace corvanet
