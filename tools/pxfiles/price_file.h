#pragma once
// A ten-column price file as Corvanet writes it: an optional header line, then per bar ticker,
// name, period letter, date YYYYMMDD, open, high, low, close, volume and open interest.
#include <string>

#include "pxfiles/data_file.h"

namespace corvanet::pxfiles {

struct PriceFile {
  std::string symbol;  // the ticker, as the file has it
  std::string name;
  char period = 'D';  // D, W or M
  int first_date = 0;
  int last_date = 0;
  DataFileBuilder data;
};

// Reads and checks the whole file: every line ten fields, one ticker and one period letter
// throughout, real dates strictly rising, numbers the format can hold, at least one bar and at
// most kMaxBars. False with `error` (naming the line) at the first fault.
bool ReadPriceFile(const std::string& path, PriceFile& file, std::string& error);

}  // namespace corvanet::pxfiles
