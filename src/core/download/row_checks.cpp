#include "core/download/row_checks.h"

#include <cstdint>
#include <cstring>

#include "core/platform/text.h"

namespace corvanet {

namespace {

constexpr std::uint64_t kEach = 0x0101010101010101ULL;
constexpr std::uint64_t kLow7 = 0x7F7F7F7F7F7F7F7FULL;
constexpr std::uint64_t kHigh = 0x8080808080808080ULL;

// The high bit of each byte of `word` that is zero, exactly: no carry crosses a byte, so a byte
// is never flagged for what its neighbour holds.
inline std::uint64_t ZeroBytes(std::uint64_t word) {
  return ~(((word & kLow7) + kLow7) | word | kLow7);
}

// The high bit of each byte below 0x20.
inline std::uint64_t BytesBelowBlank(std::uint64_t word) {
  return ~(((word & kLow7) + (kLow7 - 0x1F * kEach)) | word | kLow7);
}

// The high bit of each byte that is a control character, a tab aside.
inline std::uint64_t ControlBytes(std::uint64_t word) {
  return (BytesBelowBlank(word) & ~ZeroBytes(word ^ ('\t' * kEach))) |
         ZeroBytes(word ^ (0x7f * kEach));
}

inline bool IsControl(char c) {
  const auto u = static_cast<unsigned char>(c);
  return (u < 0x20 && c != '\t') || u == 0x7f;
}

}  // namespace

std::size_t CountFieldCommas(std::string_view row) {
  // Rows almost never hold a quote: then every comma separates two fields.
  if (row.find('"') == std::string_view::npos) return CountChar(row, ',');
  std::size_t commas = 0;
  bool quoted = false;
  for (const char c : row) {
    if (c == '"') quoted = !quoted;
    if (c == ',' && !quoted) ++commas;
  }
  return commas;
}

bool HoldsControlCharacter(std::string_view row) {
  std::size_t i = 0;
  for (; i + 8 <= row.size(); i += 8) {
    std::uint64_t word;
    std::memcpy(&word, row.data() + i, 8);
    if (ControlBytes(word) != 0) return true;
  }
  for (; i < row.size(); ++i) {
    if (IsControl(row[i])) return true;
  }
  return false;
}

RowShape ShapeOf(std::string_view row) {
  RowShape shape;
  std::uint64_t control = 0;
  std::uint64_t quotes = 0;
  std::size_t i = 0;
  for (; i + 8 <= row.size(); i += 8) {
    std::uint64_t word;
    std::memcpy(&word, row.data() + i, 8);
    control |= ControlBytes(word);
    quotes |= ZeroBytes(word ^ ('"' * kEach));
    // One bit per comma moved to the bottom of its byte, then summed by a multiply.
    shape.field_commas +=
        static_cast<std::size_t>(((ZeroBytes(word ^ (',' * kEach)) >> 7) * kEach) >> 56);
  }
  for (; i < row.size(); ++i) {
    control |= IsControl(row[i]) ? 1 : 0;
    quotes |= row[i] == '"' ? 1 : 0;
    shape.field_commas += row[i] == ',' ? 1 : 0;
  }
  shape.control = control != 0;
  if (quotes != 0) shape.field_commas = CountFieldCommas(row);
  return shape;
}

}  // namespace corvanet
