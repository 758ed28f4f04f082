#pragma once
// The checks the merge makes on every row it copies: hundreds of thousands per run, so they look
// at eight bytes at a time.
#include <cstddef>
#include <string_view>

namespace corvanet {

// The commas that separate fields: a quoted text field may hold commas of its own (a header name,
// say), and those must not make a row look garbled.
std::size_t CountFieldCommas(std::string_view row);

// A row the datafile must not take: one holding a NUL or another control character (a tab aside).
bool HoldsControlCharacter(std::string_view row);

// Both of the above from one pass over the row.
struct RowShape {
  std::size_t field_commas = 0;
  bool control = false;
};
RowShape ShapeOf(std::string_view row);

}  // namespace corvanet
