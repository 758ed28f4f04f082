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
// The text appended to `out`; `trimmed` drops the blank of non-negative values.
void AppendValue(std::string& out, double value, bool trimmed);

}  // namespace corvanet
