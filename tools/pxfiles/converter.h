#pragma once
// One call of the converter: a price file into a MetaStock folder, replacing the whole data of
// its security. Nothing is written until the price file and the folder's index files have been
// read and checked; then the data file is replaced before the index files that name it, so a
// converter killed half-way never leaves a record pointing at a missing or half-written file.
#include <cstddef>
#include <string>

#include "pxfiles/command_line.h"

namespace corvanet::pxfiles {

struct Outcome {
  std::string symbol;  // as stored, so cut when it was too long
  std::size_t bars = 0;
  std::string data_file;  // F<n>.DAT or F<n>.MWD
  std::string notes;      // what had to be cut, for the log line
};

// False with `error` (without the price file's path) when nothing could be converted.
bool Convert(const Options& options, Outcome& outcome, std::string& error);

}  // namespace corvanet::pxfiles
