#pragma once
// The image of one security's data file (F<n>.DAT or F<n>.MWD), built bar by bar while the price
// file is read: a header record holding the count, then one record per bar of seven MBF floats
// (date, open, high, low, close, volume, open interest).
#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace corvanet::pxfiles {

inline constexpr int kFieldCount = 7;
inline constexpr int kRecordLength = 4 * kFieldCount;
// Date, high, low, close, volume, open and open interest present.
inline constexpr unsigned kFieldBits = 0x7F;
// The header's count (bars + 1) is a 16-bit number.
inline constexpr std::size_t kMaxBars = 65534;

// Open, high, low, close, volume, open interest: the order of the price file and the data file.
using BarValues = std::array<double, 6>;

class DataFileBuilder {
 public:
  DataFileBuilder();
  // Makes room for about this many bars at once instead of growing step by step.
  void Reserve(std::size_t bars);
  // Appends one bar; false with `error` when a value cannot be held by an MBF float. The date is
  // YYYYMMDD.
  bool Add(int date, const BarValues& values, std::string& error);
  std::size_t bars() const { return (image_.size() / kRecordLength) - 1; }
  // The whole file, its header's count filled in.
  std::string_view Finish();

 private:
  std::string image_;
};

// The CYYMMDD number of a YYYYMMDD date, the form dates take in MASTER, EMASTER and data files.
inline int CenturyDate(int date) {
  return date - 19000000;
}

}  // namespace corvanet::pxfiles
