#include "core/platform/windows_text.h"

#include <windows.h>

namespace corvanet::windows {

std::wstring Wide(std::string_view utf8) {
  if (utf8.empty()) return {};
  const int size = static_cast<int>(utf8.size());
  const int length = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, nullptr, 0);
  std::wstring wide(static_cast<std::size_t>(length), L'\0');
  MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, wide.data(), length);
  return wide;
}

std::string Utf8(std::wstring_view wide) {
  if (wide.empty()) return {};
  const int size = static_cast<int>(wide.size());
  const int length =
      WideCharToMultiByte(CP_UTF8, 0, wide.data(), size, nullptr, 0, nullptr, nullptr);
  std::string utf8(static_cast<std::size_t>(length), '\0');
  WideCharToMultiByte(CP_UTF8, 0, wide.data(), size, utf8.data(), length, nullptr, nullptr);
  return utf8;
}

std::string ErrorText(unsigned long code) {
  wchar_t* text = nullptr;
  // WinHTTP's errors (12000 on) have their words in its own module, not the system's.
  HMODULE module = code >= 12000 && code < 13000 ? GetModuleHandleW(L"winhttp.dll") : nullptr;
  const DWORD length = FormatMessageW(
      FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS |
          (module != nullptr ? FORMAT_MESSAGE_FROM_HMODULE : 0),
      module, code, 0, reinterpret_cast<wchar_t*>(&text), 0, nullptr);
  std::wstring words = length > 0 ? std::wstring(text, length) : L"";
  LocalFree(text);
  while (!words.empty() &&
         (words.back() == L'\n' || words.back() == L'\r' || words.back() == L'.')) {
    words.pop_back();
  }
  if (words.empty()) return "system error " + std::to_string(code);
  return Utf8(words);
}

std::string LastErrorText() {
  return ErrorText(GetLastError());
}

}  // namespace corvanet::windows
