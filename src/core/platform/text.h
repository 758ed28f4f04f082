#pragma once
// Small text helpers shared by every subsystem: trimming, letter case, the leading-number value of
// a text, and the number-to-text rule used for every number the program writes.
#include <string>
#include <string_view>

namespace corvanet {

// How many times `c` stands in `text`; eight bytes at a time, for the per-row checks of big files.
std::size_t CountChar(std::string_view text, char c);

// Drops leading and trailing blanks and tabs.
std::string_view Trim(std::string_view text);
inline std::string TrimCopy(std::string_view text) {
  return std::string(Trim(text));
}

std::string ToLower(std::string_view text);
bool EqualsIgnoreCase(std::string_view a, std::string_view b);
bool StartsWith(std::string_view text, std::string_view prefix);

// The value of the number a text begins with, after leading blanks: sign, digits, a decimal point
// and an exponent are taken as far as they form a number; 0 when the text does not begin with one.
// "2.5 apples" gives 2.5, "abc" and "" give 0.
double LeadingNumber(std::string_view text);

// Parses the whole text (blanks around it allowed) as a number; false when anything else is there.
bool ParseNumber(std::string_view text, double& value);
// Parses the whole text as a whole number in the range of int.
bool ParseInteger(std::string_view text, int& value);

// The number-to-text rule: a leading blank for values >= 0 and "-" for negative ones, at most 15
// significant digits, no trailing zeros, "." with no "0" before it below 1 (" .5"), and the
// exponent form for magnitudes of 1E15 and above or below 1E-4 (" 1E+15", " 1E-05"). Writes into
// `buffer` (which must hold kNumberTextCapacity characters) and returns the text; no allocation.
inline constexpr std::size_t kNumberTextCapacity = 32;
std::string_view FormatNumber(double value, char* buffer);
// The same appended to a string.
void AppendNumber(std::string& out, double value);
std::string NumberText(double value);
// The same without the leading blank of non-negative values.
std::string TrimmedNumberText(double value);

}  // namespace corvanet
