#include "pxfiles/data_file.h"

#include <cstdint>
#include <cstdio>

#include "pxfiles/bytes.h"
#include "pxfiles/mbf.h"

namespace corvanet::pxfiles {

namespace {

constexpr std::array<const char*, 6> kValueNames = {"open",  "high",   "low",
                                                    "close", "volume", "open interest"};

}  // namespace

DataFileBuilder::DataFileBuilder() : image_(kRecordLength, '\0') {}

void DataFileBuilder::Reserve(std::size_t bars) {
  image_.reserve((bars + 1) * kRecordLength);
}

bool DataFileBuilder::Add(int date, const BarValues& values, std::string& error) {
  std::array<std::uint32_t, kFieldCount> words{};
  if (!ToMbf(CenturyDate(date), words[0])) {
    error = "date " + std::to_string(date) + " cannot be stored";
    return false;
  }
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (!ToMbf(values[i], words[i + 1])) {
      char text[64];
      std::snprintf(text, sizeof text, "%s %g is too large for the format", kValueNames[i],
                    values[i]);
      error = text;
      return false;
    }
  }
  char record[kRecordLength];
  for (std::size_t i = 0; i < words.size(); ++i) PutU32(record + 4 * i, words[i]);
  image_.append(record, kRecordLength);
  return true;
}

std::string_view DataFileBuilder::Finish() {
  PutU16(image_.data() + 2, static_cast<unsigned>(bars() + 1));
  return image_;
}

}  // namespace corvanet::pxfiles
