#include "core/stats/value_text.h"

#include "core/stats/composite_row.h"

#include <charconv>
#include <cstdint>

#include "core/platform/text.h"

namespace corvanet {

namespace {

constexpr double kScales[] = {1e1, 1e2, 1e3, 1e4, 1e5, 1e6};

// Writes the digits of `magnitude` with a point `decimals` places from the right and no "0"
// before the point: " .5", "-1234.25".
std::string_view WriteScaled(bool negative, std::uint64_t magnitude, int decimals, char* buffer) {
  char digits[24];
  const auto end = std::to_chars(digits, digits + sizeof digits, magnitude).ptr;
  const auto length = static_cast<int>(end - digits);
  char* out = buffer;
  *out++ = negative ? '-' : ' ';
  if (decimals == 0) {
    for (int i = 0; i < length; ++i) *out++ = digits[i];
  } else if (length > decimals) {
    const int whole = length - decimals;
    for (int i = 0; i < whole; ++i) *out++ = digits[i];
    *out++ = '.';
    for (int i = whole; i < length; ++i) *out++ = digits[i];
  } else {
    *out++ = '.';
    for (int i = length; i < decimals; ++i) *out++ = '0';
    for (int i = 0; i < length; ++i) *out++ = digits[i];
  }
  return {buffer, static_cast<std::size_t>(out - buffer)};
}

}  // namespace

std::string_view FormatValue(double value, char* buffer) {
  if (!(value > -1e15 && value < 1e15)) return FormatNumber(value, buffer);
  // A whole number below 1E15 has at most 15 digits, so the rule writes it digit for digit.
  const auto whole = static_cast<std::int64_t>(value);
  if (static_cast<double>(whole) == value) {
    const bool negative = whole < 0;
    const std::uint64_t magnitude =
        negative ? 0 - static_cast<std::uint64_t>(whole) : static_cast<std::uint64_t>(whole);
    return WriteScaled(negative, magnitude, 0, buffer);
  }
  // A value that is exactly the double nearest to a decimal of at most 15 significant digits is
  // written as that decimal by the 15-digit rule too (15 digits survive a trip through a double),
  // so prices and percentages with a few decimals need no general conversion. The smallest
  // number of decimals that matches is the one without trailing zeros.
  const double magnitude = value < 0 ? -value : value;
  if (magnitude >= 1e-4) {
    for (int k = 0; k < 6; ++k) {
      const double scaled = magnitude * kScales[k];
      if (scaled >= 1e15) break;
      const auto digits = static_cast<std::uint64_t>(scaled + 0.5);
      if (static_cast<double>(digits) / kScales[k] == magnitude) {
        return WriteScaled(value < 0, digits, k + 1, buffer);
      }
    }
  }
  return FormatNumber(value, buffer);
}

bool IsNumberRuleText(std::string_view text) {
  const bool negative = !text.empty() && text.front() == '-';
  if (negative) text.remove_prefix(1);
  std::size_t i = 0;
  while (i < text.size() && text[i] >= '0' && text[i] <= '9') ++i;
  const std::string_view whole = text.substr(0, i);
  if (whole.size() > 1 && whole.front() == '0') return false;
  if (i == text.size()) {
    // A whole number; "-0" is written "0".
    return !whole.empty() && whole.size() <= 15 && !(negative && whole == "0");
  }
  if (text[i] != '.' || whole == "0") return false;
  const std::string_view fraction = text.substr(i + 1);
  if (fraction.empty() || fraction.back() == '0') return false;
  for (const char c : fraction) {
    if (c < '0' || c > '9') return false;
  }
  if (whole.size() + fraction.size() > 15) return false;
  // Below 1E-4 the rule takes the exponent form.
  return !whole.empty() || fraction.find_first_not_of('0') <= 3;
}

bool CopiesAsWritten(std::string_view text, int column) {
  if (!IsNumberRuleText(text)) return false;
  if (!IsIntegerColumn(column)) return true;
  // Nine digits always fit 32 bits; longer ones are left to the conversion's range check.
  const std::size_t digits = text.size() - (text.front() == '-' ? 1 : 0);
  return text.find('.') == std::string_view::npos && digits <= 9;
}

void AppendValue(std::string& out, double value, bool trimmed) {
  char buffer[kNumberTextCapacity];
  std::string_view text = FormatValue(value, buffer);
  if (trimmed && !text.empty() && text.front() == ' ') text.remove_prefix(1);
  out += text;
}

}  // namespace corvanet
