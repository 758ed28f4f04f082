#pragma once
// Fields of the MetaStock files, read and written byte by byte in little-endian order so the
// layout does not depend on the machine the converter runs on.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace corvanet::pxfiles {

inline unsigned GetU8(const char* at) {
  return static_cast<unsigned char>(at[0]);
}
inline unsigned GetU16(const char* at) {
  return GetU8(at) | (GetU8(at + 1) << 8);
}
inline void PutU8(char* at, unsigned value) {
  at[0] = static_cast<char>(value & 0xFFu);
}
inline void PutU16(char* at, unsigned value) {
  PutU8(at, value);
  PutU8(at + 1, value >> 8);
}
inline void PutU32(char* at, std::uint32_t value) {
  PutU16(at, value & 0xFFFFu);
  PutU16(at + 2, value >> 16);
}
inline void PutI32(char* at, std::int32_t value) {
  PutU32(at, static_cast<std::uint32_t>(value));
}

// Copies `text` into a field of `size` bytes and fills the rest with `pad`; longer text is cut.
inline void PutText(char* at, std::size_t size, std::string_view text, char pad) {
  const std::size_t n = std::min(size, text.size());
  std::memcpy(at, text.data(), n);
  std::memset(at + n, pad, size - n);
}

// A text field as other writers leave it: up to the first NUL, without trailing blanks.
inline std::string_view GetText(const char* at, std::size_t size) {
  std::string_view text(at, size);
  text = text.substr(0, text.find('\0'));
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  return text;
}

}  // namespace corvanet::pxfiles
