#pragma once
// HTTP basic authentication, checked by hand so that any character in a password works: the
// credentials are split at the first ':' only, and nothing is unescaped.
#include <optional>
#include <string>
#include <string_view>

namespace corvanet::demo {

// Standard base64 (padding optional); nullopt for any character outside the alphabet.
std::optional<std::string> DecodeBase64(std::string_view text);

// True when an Authorization header value ("Basic <base64 of user:password>") carries exactly
// this user and password.
bool CredentialsMatch(std::string_view authorization, std::string_view user,
                      std::string_view password);

}  // namespace corvanet::demo
