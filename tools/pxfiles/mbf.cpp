#include "pxfiles/mbf.h"

#include <bit>
#include <cmath>

namespace corvanet::pxfiles {

bool ToMbf(double value, std::uint32_t& word) {
  const float single = static_cast<float>(value);
  if (!std::isfinite(single)) return false;
  const auto ieee = std::bit_cast<std::uint32_t>(single);
  const std::uint32_t exponent = (ieee >> 23) & 0xFFu;
  if (exponent == 0) {
    word = 0;
    return true;
  }
  if (exponent + 2 > 0xFFu) return false;
  const std::uint32_t sign = ieee >> 31;
  word = ((exponent + 2) << 24) | (sign << 23) | (ieee & 0x7FFFFFu);
  return true;
}

}  // namespace corvanet::pxfiles
