#pragma once
// Runs corvanet-cli in-process (streams captured, RunListNum.txt and the first report in a start
// folder of the test's own) or as a real process started from that folder.
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "cli/cli.h"
#include "core/platform/files.h"
#include "support/child_process.h"
#include "support/test_support.h"

namespace corvanet::test {

struct CliResult {
  int code = -1;
  std::string out;
  std::string err;
};

class CliTest : public ::testing::Test {
 protected:
  CliTest() {
    CreateFolders(start());
    // Retries of failures that may pass start at once; the service's Retry-After still counts.
    ::setenv("CORVANET_RETRY_PAUSE_MS", "0", 0);
  }

  // The installation root as given on the command line (no trailing separator: the CLI adds it).
  std::string base_arg() const { return dir / "inst"; }
  std::string base() const { return dir / "inst/"; }
  std::string start() const { return dir / "start/"; }
  std::string settings_file() const { return base() + "Rondex/Rondex.ini"; }

  CliResult Run(const std::vector<std::string>& args) const {
    std::ostringstream out;
    std::ostringstream err;
    cli::CliEnvironment environment;
    environment.start_directory = start();
    environment.change_directory = false;
    const int code = cli::RunCli(args, out, err, environment);
    return {code, out.str(), err.str()};
  }
  // The same with "--base-dir" and the test's installation in front.
  CliResult RunIn(std::vector<std::string> args) const {
    args.insert(args.begin(), {"--base-dir", base_arg()});
    return Run(args);
  }

  // Starts the built program from the start folder with the home folder in the temporary folder;
  // `args` and `environment` ("NAME=value ...") are shell text. Standard error is kept apart
  // from the output. With `time_limit` (seconds), a program still running then is ended: status
  // 124.
  CliResult RunProcess(const std::string& args, const std::string& environment = "",
                       int time_limit = 0) const {
    std::vector<std::string> variables = {"HOME=" + dir.path(), "USERPROFILE=" + dir.path(),
                                          "CORVANET_BASE_DIR="};
    for (std::string& variable : ShellWords(environment)) variables.push_back(std::move(variable));
    const ProgramRun run = RunProgram(BinaryPath("corvanet-cli"), ShellWords(args), variables,
                                      start(), dir.path(), time_limit);
    return {run.code, run.out, run.err};
  }

  TempDir dir;
};

}  // namespace corvanet::test
