#include <windows.h>
// After windows.h, whose types it uses.
#include <shellapi.h>

#include "cli/console.h"
#include "core/platform/windows_text.h"

namespace corvanet::cli {

std::vector<std::string> ProgramArguments(int /*argc*/, char** /*argv*/) {
  SetConsoleOutputCP(CP_UTF8);
  int count = 0;
  wchar_t** wide = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::string> args;
  for (int i = 1; i < count; ++i) args.push_back(windows::Utf8(wide[i]));
  LocalFree(wide);
  return args;
}

bool StderrIsTerminal() {
  DWORD mode = 0;
  return GetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), &mode) != 0;
}

bool StdinIsTerminal() {
  DWORD mode = 0;
  return GetConsoleMode(GetStdHandle(STD_INPUT_HANDLE), &mode) != 0;
}

int TerminalWidth() {
  CONSOLE_SCREEN_BUFFER_INFO info{};
  if (GetConsoleScreenBufferInfo(GetStdHandle(STD_ERROR_HANDLE), &info)) {
    const int width = info.srWindow.Right - info.srWindow.Left + 1;
    if (width > 0) return width;
  }
  return 80;
}

}  // namespace corvanet::cli
