#pragma once
// A second reading of the MetaStock folder format, for the tests: written from the format's
// description on its own, without the converter's code, so that a misreading in one shows up
// as a disagreement with the other. Besides the securities and their bars it lists every way the
// files of a folder disagree with each other.
#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace corvanet::test {

struct MetastockBar {
  int date = 0;                    // YYYYMMDD
  std::array<double, 6> values{};  // open, high, low, close, volume, open interest (0 if absent)
};

struct MetastockSecurity {
  std::string index;  // "MASTER" (with EMASTER) or "XMASTER"
  int file_number = 0;
  std::string data_file;  // as the file number names it: F<n>.DAT or F<n>.MWD
  std::string symbol;
  std::string name;  // EMASTER's long name for MASTER securities
  char period = 0;
  int first_date = 0;  // YYYYMMDD, as the index states them
  int last_date = 0;
  int fields = 0;
  unsigned field_bits = 0;  // 0x01 date, 0x02 high, ... as stated or implied by the count
  std::vector<MetastockBar> bars;
};

struct MetastockFolder {
  std::vector<MetastockSecurity> securities;  // MASTER's records in order, then XMASTER's
  std::vector<std::string> problems;          // empty when all files agree
};

MetastockFolder ReadMetastockFolder(const std::string& folder);

// The value of a 4-byte MBF float (given as the little-endian word).
double MbfValue(std::uint32_t word);

}  // namespace corvanet::test
