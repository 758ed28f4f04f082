#include "core/stats/field_split.h"

#include <bit>

#include "core/platform/text.h"

#if defined(__SSE2__) || defined(_M_X64)
#include <emmintrin.h>
#endif

namespace corvanet {

namespace {

bool IsBlank(char c) {
  return c == ' ' || c == '\t';
}

inline std::string_view TrimmedField(const char* begin, const char* stop) {
  while (begin < stop && IsBlank(*begin)) ++begin;
  while (stop > begin && IsBlank(stop[-1])) --stop;
  return {begin, static_cast<std::size_t>(stop - begin)};
}

std::size_t SplitQuoted(std::string_view line, std::span<std::string_view> fields) {
  const char* p = line.data();
  const char* const end = p + line.size();
  std::size_t count = 0;
  for (;;) {
    while (p < end && IsBlank(*p)) ++p;
    std::string_view field;
    if (p < end && *p == '"') {
      const char* begin = ++p;
      while (p < end && *p != '"') ++p;
      field = std::string_view(begin, static_cast<std::size_t>(p - begin));
      // Whatever stands between the closing quote and the next comma is not part of the field.
      while (p < end && *p != ',') ++p;
    } else {
      const char* begin = p;
      while (p < end && *p != ',') ++p;
      field = TrimmedField(begin, p);
    }
    if (count < fields.size()) fields[count] = field;
    ++count;
    if (p >= end) return count;
    ++p;  // past the comma; a comma at the very end leaves one empty field behind it
  }
}

}  // namespace

bool FindFieldEnds(std::string_view line, std::span<std::uint32_t> ends, std::size_t& count) {
  const char* const base = line.data();
  const std::size_t size = line.size();
  count = 0;
  const auto field_ends_at = [&](std::size_t stop) {
    if (count < ends.size()) ends[count] = static_cast<std::uint32_t>(stop);
    ++count;
  };
  std::size_t i = 0;
  // Sixteen bytes at a time where the processor allows.
#if defined(__SSE2__) || defined(_M_X64)
  const __m128i comma = _mm_set1_epi8(',');
  const __m128i quote = _mm_set1_epi8('"');
  for (; i + 16 <= size; i += 16) {
    const __m128i chunk = _mm_loadu_si128(reinterpret_cast<const __m128i*>(base + i));
    if (_mm_movemask_epi8(_mm_cmpeq_epi8(chunk, quote)) != 0) return false;
    auto mask = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(chunk, comma)));
    while (mask != 0) {
      field_ends_at(i + static_cast<std::size_t>(std::countr_zero(mask)));
      mask &= mask - 1;
    }
  }
#endif
  for (; i < size; ++i) {
    if (base[i] == ',') field_ends_at(i);
    if (base[i] == '"') return false;
  }
  field_ends_at(size);
  return true;
}

namespace {

constexpr double kPowersOfTen[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                   1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};

}  // namespace

std::size_t SplitFieldsInPlace(std::string_view line, std::span<std::string_view> fields) {
  std::uint32_t ends[256];
  std::size_t count = 0;
  if (line.size() > UINT32_MAX || !FindFieldEnds(line, ends, count)) {
    return SplitQuoted(line, fields);
  }
  for (std::size_t i = 0; i < count && i < fields.size() && i < std::size(ends); ++i) {
    fields[i] = FieldBetween(line, i == 0 ? 0 : ends[i - 1] + 1, ends[i]);
  }
  return count;
}

// Plain decimals of up to 15 digits are converted directly: the digits and the power of ten are
// both exact doubles, so the one division rounds correctly. Exponents and longer mantissas go
// through the general parser.
bool ParseDecimal(std::string_view text, double& value) {
  std::size_t i = 0;
  const bool negative = !text.empty() && text[0] == '-';
  if (!text.empty() && (text[0] == '-' || text[0] == '+')) i = 1;
  std::uint64_t mantissa = 0;
  int digits = 0;
  int fraction_digits = 0;
  bool point = false;
  for (; i < text.size() && digits <= 15; ++i) {
    const char c = text[i];
    if (c >= '0' && c <= '9') {
      mantissa = mantissa * 10 + static_cast<unsigned>(c - '0');
      ++digits;
      if (point) ++fraction_digits;
    } else if (c == '.' && !point) {
      point = true;
    } else {
      break;
    }
  }
  if (i == text.size() && digits > 0 && digits <= 15) {
    const double magnitude = static_cast<double>(mantissa) / kPowersOfTen[fraction_digits];
    value = negative ? -magnitude : magnitude;
    return true;
  }
  return ParseNumber(text, value);
}

bool ParseWhole(std::string_view text, std::int64_t& value) {
  std::size_t i = !text.empty() && (text[0] == '-' || text[0] == '+') ? 1 : 0;
  if (i == text.size() || text.size() - i > 18) return false;
  std::int64_t magnitude = 0;
  for (; i < text.size(); ++i) {
    const char c = text[i];
    if (c < '0' || c > '9') return false;
    magnitude = magnitude * 10 + (c - '0');
  }
  value = text[0] == '-' ? -magnitude : magnitude;
  return true;
}

}  // namespace corvanet
