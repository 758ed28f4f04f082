#pragma once
// corvanet-cli: the program without a window. Runs in-process in the tests, with its streams and
// start directory injected.
#include <iosfwd>
#include <string>
#include <vector>

namespace corvanet::cli {

enum ExitCode : int {
  kExitOk = 0,
  kExitStartupFailed = 1,  // the system failed: no installation, or a schedule not (un)installed
  kExitUsage = 2,
  kExitRunFailures = 3,
  kExitRefused = 4,  // a check of the program refused the command; nothing was changed
  kExitBusy = 5,     // another run holds the installation
};

struct CliEnvironment {
  std::string start_directory;   // where RunListNum.txt is read; "" = current
  bool change_directory = true;  // make ProgramDirectory current after start-up
  // Standard error is a terminal: `run` and `stats` draw their progress line on `err` (with its
  // width in columns).
  bool progress_terminal = false;
  int terminal_width = 80;
  // Where `settings --password-stdin` reads the password: nullptr = standard input, which is asked
  // without echo when `input_terminal`.
  std::istream* input = nullptr;
  bool input_terminal = false;
};

// `args` excludes the program name.
int RunCli(const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
           const CliEnvironment& environment = {});

}  // namespace corvanet::cli
