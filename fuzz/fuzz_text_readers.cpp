// The line and field readers, under every other reader of outside input.
#include <string>
#include <vector>

#include "core/platform/field_reader.h"
#include "core/platform/line_reader.h"
#include "fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace corvanet;
  const std::string path = fuzz::WriteInput("text.csv", data, size);
  LineReader lines;
  std::vector<std::string> fields;
  if (lines.Open(path)) {
    std::string_view line;
    while (lines.Next(line)) {
      fields.clear();
      SplitFields(line, fields, QuoteRule::kClassic);
      SplitFields(line, fields, QuoteRule::kDoubledQuoteEscapes);
    }
  }
  FieldReader reader(path);
  std::string name;
  std::string symbol;
  while (!reader.AtEnd() && reader.ReadRecord(name, symbol)) {
  }
  return 0;
}
