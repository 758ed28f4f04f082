#include <unistd.h>

#include <iostream>
#include <string>
#include <vector>

#include "cli/cli.h"
#include "cli/progress_line.h"

int main(int argc, char** argv) {
  const std::vector<std::string> args(argv + 1, argv + argc);
  corvanet::cli::CliEnvironment environment;
  // Cron mail and log files get no progress line, only a person at a terminal does.
  environment.progress_terminal = ::isatty(STDERR_FILENO) == 1;
  if (environment.progress_terminal) environment.terminal_width = corvanet::cli::TerminalWidth();
  environment.input_terminal = ::isatty(STDIN_FILENO) == 1;
  return corvanet::cli::RunCli(args, std::cout, std::cerr, environment);
}
