#include "demo_service/basic_auth.h"

#include "core/platform/text.h"

namespace corvanet::demo {

namespace {

int Sextet(char c) {
  if (c >= 'A' && c <= 'Z') return c - 'A';
  if (c >= 'a' && c <= 'z') return c - 'a' + 26;
  if (c >= '0' && c <= '9') return c - '0' + 52;
  if (c == '+') return 62;
  if (c == '/') return 63;
  return -1;
}

}  // namespace

std::optional<std::string> DecodeBase64(std::string_view text) {
  while (!text.empty() && text.back() == '=') text.remove_suffix(1);
  std::string out;
  unsigned bits = 0;
  int count = 0;
  for (const char c : text) {
    const int value = Sextet(c);
    if (value < 0) return std::nullopt;
    bits = (bits << 6) | static_cast<unsigned>(value);
    count += 6;
    if (count >= 8) {
      count -= 8;
      out += static_cast<char>((bits >> count) & 0xFF);
    }
  }
  return out;
}

bool CredentialsMatch(std::string_view authorization, std::string_view user,
                      std::string_view password) {
  authorization = Trim(authorization);
  const std::size_t blank = authorization.find(' ');
  if (blank == std::string_view::npos ||
      !EqualsIgnoreCase(authorization.substr(0, blank), "Basic")) {
    return false;
  }
  const std::optional<std::string> decoded = DecodeBase64(Trim(authorization.substr(blank + 1)));
  if (!decoded) return false;
  const std::size_t colon = decoded->find(':');
  if (colon == std::string::npos) return false;
  return std::string_view(*decoded).substr(0, colon) == user &&
         std::string_view(*decoded).substr(colon + 1) == password;
}

}  // namespace corvanet::demo
