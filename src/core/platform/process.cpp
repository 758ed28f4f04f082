#include "core/platform/process.h"

#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <vector>

#include "core/platform/paths.h"

#ifndef _WIN32
#include <sys/wait.h>
#include <unistd.h>
extern char** environ;
#else
#include <windows.h>
#endif

namespace corvanet {

#ifndef _WIN32

bool StartHiddenBatch(const std::string& batch_file, const std::string& working_folder,
                      const std::string& program_folder) {
  // Everything the child needs is built before fork: after it only async-signal-safe calls.
  const char* old_path = std::getenv("PATH");
  const std::string path_variable =
      "PATH=" + program_folder + ":" + (old_path != nullptr ? old_path : "/usr/bin:/bin");
  // The batch file's lines end in CR LF, which sh would take as part of each line's last word
  // ("Complete.exe\r" is no command): the carriage returns go before the lines are run. "$1" is
  // the name as given, relative to the working folder or absolute.
  const std::string script = "Call() { \"$@\"; }; eval \"$(tr -d '\\r' < \"$1\")\"";
  const char* argv[] = {"sh", "-c", script.c_str(), "sh", batch_file.c_str(), nullptr};
  std::vector<const char*> envp;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    if (std::string_view(*entry).substr(0, 5) != "PATH=") envp.push_back(*entry);
  }
  envp.push_back(path_variable.c_str());
  envp.push_back(nullptr);

  const pid_t child = ::fork();
  if (child < 0) return false;
  if (child == 0) {
    // A second fork detaches the batch, so nobody has to reap it.
    if (::fork() != 0) ::_exit(0);
    ::setsid();
    if (::chdir(working_folder.c_str()) != 0) ::_exit(127);
    ::execve("/bin/sh", const_cast<char* const*>(argv), const_cast<char* const*>(envp.data()));
    ::_exit(127);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

std::string ExecutableFolder() {
  std::error_code ec;
  const auto exe = std::filesystem::read_symlink("/proc/self/exe", ec);
  if (ec) return {};
  return WithTrailingSeparator(exe.parent_path().string());
}

#else

bool StartHiddenBatch(const std::string& batch_file, const std::string& working_folder,
                      const std::string& /*program_folder*/) {
  std::string command = "cmd.exe /c \"" + batch_file + "\"";
  STARTUPINFOA startup{};
  startup.cb = sizeof startup;
  startup.dwFlags = STARTF_USESHOWWINDOW;
  startup.wShowWindow = SW_HIDE;
  PROCESS_INFORMATION info{};
  if (!CreateProcessA(nullptr, command.data(), nullptr, nullptr, FALSE, CREATE_NO_WINDOW, nullptr,
                      working_folder.c_str(), &startup, &info)) {
    return false;
  }
  CloseHandle(info.hThread);
  CloseHandle(info.hProcess);
  return true;
}

std::string ExecutableFolder() {
  char buffer[MAX_PATH];
  const DWORD n = GetModuleFileNameA(nullptr, buffer, MAX_PATH);
  if (n == 0) return {};
  return WithTrailingSeparator(
      std::filesystem::path(std::string(buffer, n)).parent_path().string());
}

#endif

}  // namespace corvanet
