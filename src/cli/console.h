#pragma once
// What the command line program asks of the console it runs in, once per system
// (console_posix.cpp, console_win32.cpp).
#include <string>
#include <vector>

namespace corvanet::cli {

// The program's arguments as UTF-8 texts (on Windows read from the system's UTF-16 command line,
// which main's argv would give in the narrow code page); the output streams take UTF-8 as well.
std::vector<std::string> ProgramArguments(int argc, char** argv);
// True when standard error is a terminal a person watches, not a file or a pipe.
bool StderrIsTerminal();
// True when standard input is a terminal a person types at.
bool StdinIsTerminal();
// The width of the terminal on standard error; 80 when it cannot be asked.
int TerminalWidth();

}  // namespace corvanet::cli
