#pragma once
// Prices, volumes and dates in MASTER and the data files are 4-byte Microsoft Binary Format
// floats: the exponent in the top byte, biased two above the IEEE single's, and the sign just
// below it.
#include <cstdint>

namespace corvanet::pxfiles {

// The MBF word of `value` rounded to single precision. Values too small for a normal single
// (subnormals) become 0, since MBF has no way to hold them. False when the value is not finite or
// too large for the MBF exponent: wrapping it would store a tiny number in place of a huge one.
bool ToMbf(double value, std::uint32_t& word);

}  // namespace corvanet::pxfiles
