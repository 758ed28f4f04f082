#pragma once
// Reading a secret from the terminal.
#include <string>

namespace corvanet {

// Reads one line from standard input with the terminal's echo off, restoring it afterwards (and
// ending the line on standard error, where the echoed line break would have gone). False at the
// end of input or on an error.
bool ReadLineWithoutEcho(std::string& line);

}  // namespace corvanet
