#include "core/platform/terminal.h"

#include <cstdio>
#include <iostream>

#ifndef _WIN32
#include <termios.h>
#include <unistd.h>
#endif

namespace corvanet {

bool ReadLineWithoutEcho(std::string& line) {
#ifndef _WIN32
  termios saved{};
  const bool terminal = ::tcgetattr(STDIN_FILENO, &saved) == 0;
  if (terminal) {
    termios quiet = saved;
    quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &quiet);
  }
  const bool read = static_cast<bool>(std::getline(std::cin, line));
  if (terminal) {
    ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &saved);
    std::fputc('\n', stderr);
  }
  return read;
#else
  return static_cast<bool>(std::getline(std::cin, line));
#endif
}

}  // namespace corvanet
