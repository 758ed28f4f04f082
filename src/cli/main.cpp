#include <iostream>
#include <string>
#include <vector>

#include "cli/cli.h"
#include "cli/console.h"

int main(int argc, char** argv) {
  const std::vector<std::string> args = corvanet::cli::ProgramArguments(argc, argv);
  corvanet::cli::CliEnvironment environment;
  // Cron mail and log files get no progress line, only a person at a terminal does.
  environment.progress_terminal = corvanet::cli::StderrIsTerminal();
  if (environment.progress_terminal) environment.terminal_width = corvanet::cli::TerminalWidth();
  environment.input_terminal = corvanet::cli::StdinIsTerminal();
  return corvanet::cli::RunCli(args, std::cout, std::cerr, environment);
}
