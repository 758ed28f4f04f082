#include "cli/cli.h"

#include <cstdlib>
#include <ostream>

#include "cli/commands.h"
#include "core/app/log.h"
#include "core/app/startup.h"
#include "core/download/run_summary.h"
#include "core/platform/clock.h"
#include "core/platform/headless_shell.h"
#include "core/platform/http.h"
#include "core/platform/paths.h"
#include "core/platform/text.h"

namespace corvanet::cli {

namespace {

struct GlobalOptions {
  std::string base_directory;
  bool log = false;
  bool yes = false;
  std::vector<std::string> command;  // the command and its arguments
};

// False on a usage error (reported on `err`).
bool ParseGlobalOptions(const std::vector<std::string>& args, GlobalOptions& options,
                        std::ostream& err) {
  std::size_t i = 0;
  for (; i < args.size() && StartsWith(args[i], "--"); ++i) {
    const std::string& arg = args[i];
    if (arg == "--log") {
      options.log = true;
    } else if (arg == "--yes") {
      options.yes = true;
    } else if (arg == "--base-dir") {
      if (i + 1 >= args.size() || args[i + 1].empty()) {
        err << "corvanet-cli: --base-dir needs a folder\n";
        return false;
      }
      options.base_directory = WithTrailingSeparator(args[++i]);
    } else if (StartsWith(arg, "--base-dir=")) {
      // An empty value would make the file-system root the installation.
      if (arg.size() == 11) {
        err << "corvanet-cli: --base-dir needs a folder\n";
        return false;
      }
      options.base_directory = WithTrailingSeparator(arg.substr(11));
    } else {
      err << "corvanet-cli: unknown option " << arg << '\n';
      return false;
    }
  }
  options.command.assign(args.begin() + static_cast<std::ptrdiff_t>(i), args.end());
  if (!options.command.empty() && FindCommand(options.command.front()) == nullptr) {
    err << "corvanet-cli: unknown command " << options.command.front() << '\n';
    return false;
  }
  return true;
}

long HttpTimeoutFromEnvironment() {
  // Tests shorten the 60-second time-out to exercise it.
  if (const char* text = std::getenv("CORVANET_HTTP_TIMEOUT")) {
    int seconds = 0;
    if (ParseInteger(text, seconds) && seconds > 0) return seconds;
  }
  return 60;
}

}  // namespace

int RunCli(const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
           const CliEnvironment& environment) {
  GlobalOptions options;
  if (!ParseGlobalOptions(args, options, err)) {
    PrintUsage(err);
    return kExitUsage;
  }
  HeadlessShell shell(out, options.yes);
  CurlHttpClient http;
  SystemClock clock;
  Session session(shell, http, clock);
  session.http_timeout_seconds = HttpTimeoutFromEnvironment();

  StartupOptions startup;
  startup.base_directory =
      options.base_directory.empty() ? DefaultBaseDirectory() : options.base_directory;
  startup.start_directory = environment.start_directory;
  startup.change_directory = environment.change_directory;
  startup.may_run_unattended = options.command.empty();
  if (!Form_Load(session, startup)) {
    err << "corvanet-cli: start-up failed: could not create the installation in "
        << session.app.ProgramDirectory << '\n';
    return kExitStartupFailed;
  }
  if (options.log) {
    session.ui.GenerateLogFile = 1;
    GenerateLogFile_Click(session);
  }

  CommandContext context{session, out, err};
  if (options.command.empty()) {
    if (session.app.RunListNum >= 1 && session.app.RunListNum <= 7) {
      return RunAutomated(context);
    }
    PrintInstallationSummary(context);
    return kExitOk;
  }
  const CommandDef* command = FindCommand(options.command.front());
  const std::vector<std::string> command_args(options.command.begin() + 1, options.command.end());
  return command->run(context, command_args);
}

}  // namespace corvanet::cli
