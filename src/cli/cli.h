#pragma once
// corvanet-cli: the program without a window. Runs in-process in the tests, with its streams and
// start directory injected.
#include <iosfwd>
#include <string>
#include <vector>

namespace corvanet::cli {

enum ExitCode : int {
  kExitOk = 0,
  kExitStartupFailed = 1,
  kExitUsage = 2,
  kExitRunFailures = 3,
  kExitRefused = 4,  // a check of the program refused the command; nothing was changed
  kExitBusy = 5,     // another run holds the installation
};

struct CliEnvironment {
  std::string start_directory;   // where RunListNum.txt and the first report go; "" = current
  bool change_directory = true;  // make ProgramDirectory current after start-up
};

// `args` excludes the program name.
int RunCli(const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
           const CliEnvironment& environment = {});

}  // namespace corvanet::cli
