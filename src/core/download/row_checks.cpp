#include "core/download/row_checks.h"

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "core/download/update_file_index.h"
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
  std::size_t i = 0;
  bool control = false;
  bool quotes = false;
#if defined(__SSE2__)
  // Sixteen bytes a step where the processor has the instructions for it (every x86-64 does).
  const __m128i comma = _mm_set1_epi8(',');
  const __m128i quote = _mm_set1_epi8('"');
  const __m128i tab = _mm_set1_epi8('\t');
  const __m128i del = _mm_set1_epi8(0x7f);
  const __m128i below_blank = _mm_set1_epi8(0x20);
  int flagged = 0;
  // Commas counted per byte lane (a match is -1, so subtracting it adds one), summed every 255
  // steps before a lane could overflow.
  __m128i lanes = _mm_setzero_si128();
  const auto add_lanes = [&] {
    const __m128i sums = _mm_sad_epu8(lanes, _mm_setzero_si128());
    shape.field_commas += static_cast<std::size_t>(_mm_cvtsi128_si32(sums)) +
                          static_cast<std::size_t>(_mm_extract_epi16(sums, 4));
    lanes = _mm_setzero_si128();
  };
  for (int steps = 1; i + 16 <= row.size(); i += 16, ++steps) {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(row.data() + i));
    lanes = _mm_sub_epi8(lanes, _mm_cmpeq_epi8(bytes, comma));
    if (steps % 255 == 0) add_lanes();
    // Signed compare: bytes of 0x80 and above read as negative, so the unsigned range below 0x20
    // is checked as "not negative and less than 0x20".
    const __m128i low = _mm_andnot_si128(_mm_cmplt_epi8(bytes, _mm_setzero_si128()),
                                         _mm_cmplt_epi8(bytes, below_blank));
    const __m128i controls =
        _mm_or_si128(_mm_andnot_si128(_mm_cmpeq_epi8(bytes, tab), low), _mm_cmpeq_epi8(bytes, del));
    flagged |= _mm_movemask_epi8(_mm_or_si128(controls, _mm_cmpeq_epi8(bytes, quote)));
  }
  add_lanes();
  // Either a control character or a quote was seen: the rare rows that take the careful path.
  if (flagged != 0) {
    control = HoldsControlCharacter(row);
    quotes = row.find('"') != std::string_view::npos;
  }
#endif
  std::uint64_t control_bits = 0;
  std::uint64_t quote_bits = 0;
  for (; i + 8 <= row.size(); i += 8) {
    std::uint64_t word;
    std::memcpy(&word, row.data() + i, 8);
    control_bits |= ControlBytes(word);
    quote_bits |= ZeroBytes(word ^ ('"' * kEach));
    // One bit per comma moved to the bottom of its byte, then summed by a multiply.
    shape.field_commas +=
        static_cast<std::size_t>(((ZeroBytes(word ^ (',' * kEach)) >> 7) * kEach) >> 56);
  }
  for (; i < row.size(); ++i) {
    control_bits |= IsControl(row[i]) ? 1 : 0;
    quote_bits |= row[i] == '"' ? 1 : 0;
    shape.field_commas += row[i] == ',' ? 1 : 0;
  }
  shape.control = control || control_bits != 0;
  if (quotes || quote_bits != 0) shape.field_commas = CountFieldCommas(row);
  return shape;
}

bool IsCalendarDate(std::string_view date) {
  if (date.size() != 8) return false;
  int digits[8];
  for (std::size_t i = 0; i < 8; ++i) {
    if (date[i] < '0' || date[i] > '9') return false;
    digits[i] = date[i] - '0';
  }
  const int year = digits[0] * 1000 + digits[1] * 100 + digits[2] * 10 + digits[3];
  const auto month = static_cast<unsigned>(digits[4] * 10 + digits[5]);
  const auto day = static_cast<unsigned>(digits[6] * 10 + digits[7]);
  return std::chrono::year_month_day(std::chrono::year(year), std::chrono::month(month),
                                     std::chrono::day(day))
      .ok();
}

std::string LatestRowDate(const LocalDateTime& today) {
  const std::chrono::year_month_day tomorrow(
      std::chrono::sys_days(std::chrono::year_month_day(
          std::chrono::year(today.year), std::chrono::month(static_cast<unsigned>(today.month)),
          std::chrono::day(static_cast<unsigned>(today.day)))) +
      std::chrono::days(1));
  char text[16];
  std::snprintf(text, sizeof text, "%04d%02u%02u", static_cast<int>(tomorrow.year()),
                static_cast<unsigned>(tomorrow.month()), static_cast<unsigned>(tomorrow.day()));
  return text;
}

RowFault CheckRow(std::string_view row, const RowShape& shape, std::size_t field_commas,
                  std::string_view previous_date, std::string_view latest_date) {
  if (row.empty()) return RowFault::kBlank;
  if (shape.control) return RowFault::kControl;
  if (shape.field_commas != field_commas) return RowFault::kFields;
  const std::string_view date = RowDate(row);
  if (!IsCalendarDate(date)) return RowFault::kDate;
  if (date > latest_date) return RowFault::kFuture;
  if (date <= previous_date) return RowFault::kOrder;
  return RowFault::kNone;
}

std::string DescribeRowFault(RowFault fault, std::string_view row, std::size_t field_commas) {
  const std::string date(RowDate(row));
  switch (fault) {
    case RowFault::kNone:
      return {};
    case RowFault::kBlank:
      return "the row is blank";
    case RowFault::kControl:
      return "the row holds a control character";
    case RowFault::kFields:
      return "the row has " + std::to_string(CountFieldCommas(row) + 1) + " fields, not " +
             std::to_string(field_commas + 1);
    case RowFault::kDate:
      return "the row's date \"" + date + "\" is no date";
    case RowFault::kFuture:
      return "the row is dated " + date + ", after tomorrow";
    case RowFault::kOrder:
      return "the row is dated " + date + ", not after the row before it";
  }
  return {};
}

}  // namespace corvanet
