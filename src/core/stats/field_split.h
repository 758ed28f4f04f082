#pragma once
// The reading side of the datafile's hot loop: a line split into field views without copying, and
// the numbers in those fields, without the general parser for the plain forms nearly every field
// has. Nothing here allocates.
#include <cstdint>
#include <span>
#include <string_view>

namespace corvanet {

// Splits `line` into views of its fields (a quoted field loses its quotes and keeps its commas,
// an unquoted one loses its surrounding blanks), filling at most fields.size() of them. Returns
// the number of fields the line holds, counting those beyond the span. The views point into
// `line`.
std::size_t SplitFieldsInPlace(std::string_view line, std::span<std::string_view> fields);

// For a line without quotes (every line the service writes): the position of the comma that ends
// each field (the line's length for the last), at most ends.size() of them, and the number of
// fields the line holds. False, with nothing useful found, when the line holds a quote: it then
// takes SplitFieldsInPlace. Field i (from 0) spans [ends[i - 1] + 1, ends[i]), untrimmed.
bool FindFieldEnds(std::string_view line, std::span<std::uint32_t> ends, std::size_t& count);
// The field between two positions of `line`, without its surrounding blanks.
inline std::string_view FieldBetween(std::string_view line, std::size_t begin, std::size_t end) {
  while (begin < end && (line[begin] == ' ' || line[begin] == '\t')) ++begin;
  while (end > begin && (line[end - 1] == ' ' || line[end - 1] == '\t')) --end;
  return line.substr(begin, end - begin);
}

// The whole text as a number (sign, digits, point, exponent). False when anything else is there.
bool ParseDecimal(std::string_view text, double& value);
// The whole text as a whole number of at most 18 digits with an optional sign.
bool ParseWhole(std::string_view text, std::int64_t& value);

}  // namespace corvanet
