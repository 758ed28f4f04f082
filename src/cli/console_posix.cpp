#include <sys/ioctl.h>
#include <unistd.h>

#include "cli/console.h"

namespace corvanet::cli {

std::vector<std::string> ProgramArguments(int argc, char** argv) {
  return std::vector<std::string>(argv + 1, argv + argc);
}

bool StderrIsTerminal() {
  return ::isatty(STDERR_FILENO) == 1;
}

bool StdinIsTerminal() {
  return ::isatty(STDIN_FILENO) == 1;
}

int TerminalWidth() {
  winsize size{};
  if (::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) return size.ws_col;
  return 80;
}

}  // namespace corvanet::cli
