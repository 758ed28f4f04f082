#pragma once
// The number-to-text rule for the values the statistic and price files carry, quick for the whole
// numbers that make up nearly all of them (counts, volumes, dates).
#include <string>
#include <string_view>

namespace corvanet {

// The same text as FormatNumber (a blank before values >= 0, "-" before negative ones, at most 15
// significant digits), into a buffer of kNumberTextCapacity characters; no allocation.
std::string_view FormatValue(double value, char* buffer);
// True when `text` is exactly what the rule writes, less the blank before values >= 0, for the
// number it reads as ("12", "-3", ".5", "1234.25", "0"; not "012", "0.5", "1.50", "+1", "-0",
// "1E3", ".00001"). Such a field can be copied into a file instead of converted and written.
bool IsNumberRuleText(std::string_view text);
// True when the field of `column` may be copied as it stands: it is in the rule's written form and
// its column's type would not change it (a whole-number column holding "12.5" is rounded to 12
// when read, and one beyond 32 bits is an error, so those go through the conversion).
bool CopiesAsWritten(std::string_view text, int column);
// The text appended to `out`; `trimmed` drops the blank of non-negative values.
void AppendValue(std::string& out, double value, bool trimmed);

}  // namespace corvanet
