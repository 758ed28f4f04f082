#pragma once
// Text at the Windows system calls, which take UTF-16: the program's own strings, paths among
// them, are UTF-8 everywhere else. Included only by the platform layer's Windows sources.
#include <string>
#include <string_view>

namespace corvanet::windows {

// UTF-8 to UTF-16; invalid sequences become U+FFFD, as the system converts them.
std::wstring Wide(std::string_view utf8);
std::string Utf8(std::wstring_view wide);
// The system's words for an error code (GetLastError), without the line end.
std::string ErrorText(unsigned long code);
// The last error's words.
std::string LastErrorText();

}  // namespace corvanet::windows
