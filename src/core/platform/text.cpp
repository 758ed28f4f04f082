#include "core/platform/text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <system_error>

namespace corvanet {

namespace {
bool IsBlank(char c) {
  return c == ' ' || c == '\t';
}
char LowerAscii(char c) {
  return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

// Length of the longest prefix of `text` that reads as a number (sign, digits, point, exponent).
std::size_t NumberPrefixLength(std::string_view text) {
  std::size_t i = 0;
  if (i < text.size() && (text[i] == '+' || text[i] == '-')) ++i;
  std::size_t digits = 0;
  while (i < text.size() && text[i] >= '0' && text[i] <= '9') ++i, ++digits;
  if (i < text.size() && text[i] == '.') {
    ++i;
    while (i < text.size() && text[i] >= '0' && text[i] <= '9') ++i, ++digits;
  }
  if (digits == 0) return 0;
  if (i < text.size() && (text[i] == 'e' || text[i] == 'E')) {
    std::size_t j = i + 1;
    if (j < text.size() && (text[j] == '+' || text[j] == '-')) ++j;
    const std::size_t exponent_start = j;
    while (j < text.size() && text[j] >= '0' && text[j] <= '9') ++j;
    if (j > exponent_start) i = j;
  }
  return i;
}

double ParsePrefix(std::string_view number) {
  // from_chars rejects a leading '+'.
  if (!number.empty() && number.front() == '+') number.remove_prefix(1);
  double value = 0;
  const auto result = std::from_chars(number.data(), number.data() + number.size(), value);
  if (result.ec == std::errc::result_out_of_range) return 0;
  return value;
}
}  // namespace

std::size_t CountChar(std::string_view text, char c) {
  constexpr std::uint64_t kLow7 = 0x7F7F7F7F7F7F7F7FULL;
  const std::uint64_t pattern = 0x0101010101010101ULL * static_cast<unsigned char>(c);
  std::size_t count = 0;
  std::size_t i = 0;
  for (; i + 8 <= text.size(); i += 8) {
    std::uint64_t word;
    std::memcpy(&word, text.data() + i, 8);
    const std::uint64_t x = word ^ pattern;  // a zero byte where `c` stands
    // The high bit of each byte is set exactly for the zero bytes (no borrow between bytes).
    const std::uint64_t zero = ~(((x & kLow7) + kLow7) | x | kLow7);
    // One bit per byte moved to the bottom, then summed by a multiply (no popcount instruction
    // is assumed).
    count += static_cast<std::size_t>(((zero >> 7) * 0x0101010101010101ULL) >> 56);
  }
  for (; i < text.size(); ++i) count += text[i] == c ? 1 : 0;
  return count;
}

std::string_view Trim(std::string_view text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
  return text;
}

std::string ToLower(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) c = LowerAscii(c);
  return lower;
}

bool EqualsIgnoreCase(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
           return LowerAscii(x) == LowerAscii(y);
         });
}

bool StartsWith(std::string_view text, std::string_view prefix) {
  return text.substr(0, prefix.size()) == prefix;
}

double LeadingNumber(std::string_view text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  const std::size_t length = NumberPrefixLength(text);
  return length == 0 ? 0.0 : ParsePrefix(text.substr(0, length));
}

bool ParseNumber(std::string_view text, double& value) {
  text = Trim(text);
  const std::size_t length = NumberPrefixLength(text);
  if (length == 0 || length != text.size()) return false;
  value = ParsePrefix(text);
  return std::isfinite(value);
}

bool ParseInteger(std::string_view text, int& value) {
  text = Trim(text);
  if (!text.empty() && text.front() == '+') text.remove_prefix(1);
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  return result.ec == std::errc() && result.ptr == text.data() + text.size() && !text.empty();
}

std::string_view FormatNumber(double value, char* buffer) {
  char* out = buffer;
  if (std::isnan(value) || std::isinf(value)) {
    // Not a number a datafile can hold; written visibly rather than as a fake value.
    const char* text = std::isnan(value) ? "NaN" : (value > 0 ? " Inf" : "-Inf");
    const std::size_t n = std::strlen(text);
    std::memcpy(buffer, text, n);
    return {buffer, n};
  }
  *out++ = std::signbit(value) && value != 0 ? '-' : ' ';
  if (value == 0) {
    *out++ = '0';
    return {buffer, static_cast<std::size_t>(out - buffer)};
  }
  // Fifteen significant digits, rounded once: "d.dddddddddddddde+XX".
  char scientific[kNumberTextCapacity];
  const auto result = std::to_chars(scientific, scientific + sizeof scientific, std::fabs(value),
                                    std::chars_format::scientific, 14);
  const std::string_view text(scientific, static_cast<std::size_t>(result.ptr - scientific));
  const std::size_t e_pos = text.find('e');
  char digits[16];
  std::size_t digit_count = 0;
  for (std::size_t i = 0; i < e_pos; ++i) {
    if (text[i] != '.') digits[digit_count++] = text[i];
  }
  while (digit_count > 1 && digits[digit_count - 1] == '0') --digit_count;
  int exponent = 0;
  std::from_chars(text.data() + e_pos + 1 + (text[e_pos + 1] == '+' ? 1 : 0),
                  text.data() + text.size(), exponent);

  if (exponent >= 15 || exponent < -4) {
    *out++ = digits[0];
    if (digit_count > 1) {
      *out++ = '.';
      for (std::size_t i = 1; i < digit_count; ++i) *out++ = digits[i];
    }
    *out++ = 'E';
    *out++ = exponent < 0 ? '-' : '+';
    const int magnitude = exponent < 0 ? -exponent : exponent;
    if (magnitude >= 100) *out++ = static_cast<char>('0' + magnitude / 100);
    *out++ = static_cast<char>('0' + (magnitude / 10) % 10);
    *out++ = static_cast<char>('0' + magnitude % 10);
  } else if (exponent < 0) {
    *out++ = '.';
    for (int i = -1; i > exponent; --i) *out++ = '0';
    for (std::size_t i = 0; i < digit_count; ++i) *out++ = digits[i];
  } else {
    const auto integer_digits = static_cast<std::size_t>(exponent) + 1;
    for (std::size_t i = 0; i < integer_digits; ++i) *out++ = i < digit_count ? digits[i] : '0';
    if (digit_count > integer_digits) {
      *out++ = '.';
      for (std::size_t i = integer_digits; i < digit_count; ++i) *out++ = digits[i];
    }
  }
  return {buffer, static_cast<std::size_t>(out - buffer)};
}

void AppendNumber(std::string& out, double value) {
  char buffer[kNumberTextCapacity];
  out += FormatNumber(value, buffer);
}

std::string NumberText(double value) {
  std::string text;
  AppendNumber(text, value);
  return text;
}

std::string TrimmedNumberText(double value) {
  return TrimCopy(NumberText(value));
}

}  // namespace corvanet
