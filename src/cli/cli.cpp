#include "cli/cli.h"

#include <cstdlib>
#include <memory>
#include <optional>
#include <ostream>
#include <sstream>

#include "cli/command_line.h"
#include "cli/commands.h"
#include "cli/progress_line.h"
#include "core/app/startup.h"
#include "core/download/early_fetches.h"
#include "core/platform/clock.h"
#include "core/platform/headless_shell.h"
#include "core/platform/http.h"
#include "core/platform/run_lock.h"
#include "core/platform/text.h"
#include "core/state/log.h"

namespace corvanet::cli {

namespace {

long HttpTimeoutFromEnvironment() {
  // Tests shorten the 60-second time-out to exercise it.
  if (const char* text = std::getenv("CORVANET_HTTP_TIMEOUT")) {
    int seconds = 0;
    if (ParseInteger(text, seconds) && seconds > 0) return seconds;
  }
  return 60;
}

// The commands that change the installation's files: like a run, they wait for no run of another
// process, whose files those are.
bool ChangesFiles(const CommandLine& line) {
  const std::string& command = line.command;
  if (command == "clear-datafiles" || command == "refresh-masterfile") return true;
  if (command == "list") return !line.words.empty();
  if (command == "settings") return !line.words.empty() || line.password_stdin;
  if (command == "schedule") return !line.schedule.show;
  return false;
}

bool ShowsProgress(const CommandLine& line) {
  return line.command == "run" || line.command == "stats" || line.command.empty();
}

// Starts the installation and carries out the command, printing on `out` and `err`.
int StartAndRun(const CommandLine& line, std::ostream& out, std::ostream& err,
                std::ostream& terminal, const CliEnvironment& environment) {
  HeadlessShell shell(out, line.yes);
  SystemHttpClient http;
  SystemClock clock;
  Session session(shell, http, clock);
  session.http_timeout_seconds = HttpTimeoutFromEnvironment();

  StartupOptions startup;
  startup.base_directory =
      line.base_directory.empty() ? DefaultBaseDirectory() : line.base_directory;
  startup.start_directory = environment.start_directory;
  startup.change_directory = environment.change_directory;
  startup.may_run_unattended = line.command.empty();
  if (line.command == "run") startup.list_to_run = line.list;
  // Held from start-up on by a start that may run a list, so the list's update files are fetched
  // beside the master file start-up fetches.
  std::optional<EarlyFetches> early_fetches;
  if (startup.may_run_unattended || startup.list_to_run != 0) early_fetches.emplace(session);
  if (!Form_Load(session, startup)) {
    err << "corvanet-cli: start-up failed: " << session.app.StartupProblem << '\n';
    return kExitStartupFailed;
  }
  RunLock lock;
  if (ChangesFiles(line) &&
      !lock.Acquire(session.app.ProgramDirectory, FormatTimeOfDay(session.clock.Now()))) {
    err << "corvanet-cli " << line.command << ": " << lock.holder()
        << " Nothing was changed; try again when it has ended.\n";
    return kExitBusy;
  }
  if (line.log) {
    session.ui.GenerateLogFile = 1;
    // A fresh log, unless a run of another process is writing to it: then this start's lines go
    // after the run's.
    RunLock report_lock;
    if (report_lock.AcquireUnlessHeld(session.app.ProgramDirectory,
                                      FormatTimeOfDay(session.clock.Now()))) {
      GenerateLogFile_Click(session);
    }
  }

  std::optional<ProgressLine> progress;
  if (environment.progress_terminal && !line.quiet && ShowsProgress(line)) {
    progress.emplace(session, terminal, environment.terminal_width);
    session.observer = &*progress;
  }
  // Whatever is printed while the line is drawn takes its place.
  std::unique_ptr<ClearingStreamBuf> out_buf;
  std::unique_ptr<ClearingStreamBuf> err_buf;
  std::optional<std::ostream> clearing_out;
  std::optional<std::ostream> clearing_err;
  if (progress) {
    out_buf = std::make_unique<ClearingStreamBuf>(out.rdbuf(), *progress);
    err_buf = std::make_unique<ClearingStreamBuf>(err.rdbuf(), *progress);
    clearing_out.emplace(out_buf.get());
    clearing_err.emplace(err_buf.get());
  }
  CommandContext context{session, clearing_out ? *clearing_out : out,
                         clearing_err ? *clearing_err : err, environment};
  int status = kExitOk;
  if (line.command.empty()) {
    if (session.app.RunListNum >= 1 && session.app.RunListNum <= 7) {
      status = RunAutomated(context);
    } else {
      PrintInstallationSummary(context);
    }
  } else {
    status = FindCommand(line.command)(context, line);
  }
  session.observer = nullptr;
  if (progress) progress->Clear();
  return status;
}

}  // namespace

int RunCli(const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
           const CliEnvironment& environment) {
  CommandLine line;
  int status = kExitOk;
  if (!ParseCommandLine(args, line, out, err, status)) return status;
  if (!line.quiet) return StartAndRun(line, out, err, err, environment);
  // Quiet: nothing is printed when all went well; otherwise what was held back explains the
  // failure, so it goes where errors go.
  std::ostringstream held;
  status = StartAndRun(line, held, err, err, environment);
  if (status != kExitOk) err << held.str() << std::flush;
  return status;
}

}  // namespace corvanet::cli
