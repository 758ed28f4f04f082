#include "core/platform/process.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <vector>

#include "core/platform/paths.h"
#include "core/platform/run_lock.h"

#ifndef _WIN32
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>
extern char** environ;
#else
#include <windows.h>
#endif

namespace corvanet {

#ifndef _WIN32

namespace {

// The environment of this process with PATH replaced and `extra` added; the strings the pointers
// lead to live as long as `storage`.
std::vector<const char*> ChildEnvironment(const std::string& path_variable,
                                          const std::vector<std::string>& extra) {
  std::vector<const char*> envp;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string_view text(*entry);
    if (text.substr(0, 5) == "PATH=") continue;
    const bool replaced = std::any_of(extra.begin(), extra.end(), [&](const std::string& e) {
      const std::size_t equals = e.find('=');
      return text.substr(0, equals + 1) == std::string_view(e).substr(0, equals + 1);
    });
    if (!replaced) envp.push_back(*entry);
  }
  envp.push_back(path_variable.c_str());
  for (const std::string& entry : extra) envp.push_back(entry.c_str());
  envp.push_back(nullptr);
  return envp;
}

}  // namespace

bool BatchProcess::Running() {
  if (id_ <= 0) return false;
  int status = 0;
  const pid_t done = ::waitpid(static_cast<pid_t>(id_), &status, WNOHANG);
  if (done == 0) return true;
  id_ = 0;
  ended_ = true;
  return false;
}

BatchProcess StartHiddenBatch(const std::string& batch_file, const std::string& working_folder,
                              const std::string& program_folder,
                              const std::vector<std::string>& environment) {
  // Everything the child needs is built before fork: after it only async-signal-safe calls.
  const char* old_path = std::getenv("PATH");
  const std::string path_variable =
      "PATH=" + program_folder + ":" + (old_path != nullptr ? old_path : "/usr/bin:/bin");
  // The lines end in CR LF, which sh would take as part of each line's last word. Each line is
  // split into words with wildcards off and run as it stands: eval would expand "$NYA" in a path.
  const std::string script =
      "Call() { \"$@\"; }\n"
      "tr -d '\\r' < \"$1\" | while IFS= read -r line || [ -n \"$line\" ]; do\n"
      "  set -f; set -- $line; set +f\n"
      "  if [ $# -gt 0 ]; then \"$@\" < /dev/null; fi\n"
      "done\n";
  const char* argv[] = {"sh", "-c", script.c_str(), "sh", batch_file.c_str(), nullptr};
  const std::vector<const char*> envp = ChildEnvironment(path_variable, environment);
  const int run_lock = RunLock::HeldDescriptor();

  const pid_t child = ::fork();
  if (child < 0) return {};
  if (child == 0) {
    ::setsid();
    // The batch keeps the run's lock: killed or stopped, a run whose conversion goes on is still
    // a run, and the next one must not clear the MetaStock folders under it.
    if (run_lock >= 0) ::fcntl(run_lock, F_SETFD, 0);
    if (::chdir(working_folder.c_str()) != 0) ::_exit(127);
    const int quiet = ::open("/dev/null", O_RDWR);
    if (quiet >= 0) {
      ::dup2(quiet, 0);
      ::dup2(quiet, 1);
      ::dup2(quiet, 2);
    }
    ::execve("/bin/sh", const_cast<char* const*>(argv), const_cast<char* const*>(envp.data()));
    ::_exit(127);
  }
  return BatchProcess(child);
}

bool StartProgram(const std::string& name) {
  if (name.empty() || name.find('/') != std::string::npos) return false;
  const char* path = std::getenv("PATH");
  std::string found;
  std::string_view folders = path != nullptr ? path : "/usr/bin:/bin";
  while (found.empty()) {
    const std::size_t colon = folders.find(':');
    const std::string candidate =
        WithTrailingSeparator(std::string(folders.substr(0, colon))) + name;
    if (::access(candidate.c_str(), X_OK) == 0) found = candidate;
    if (colon == std::string_view::npos) break;
    folders.remove_prefix(colon + 1);
  }
  if (found.empty()) return false;
  const char* argv[] = {found.c_str(), nullptr};
  const pid_t child = ::fork();
  if (child < 0) return false;
  if (child == 0) {
    // A second fork detaches the program, so nobody has to reap it.
    if (::fork() != 0) ::_exit(0);
    ::setsid();
    ::execv(found.c_str(), const_cast<char* const*>(argv));
    ::_exit(127);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  return true;
}

std::string ExecutableFolder() {
  std::error_code ec;
  const auto exe = std::filesystem::read_symlink("/proc/self/exe", ec);
  if (ec) return {};
  return WithTrailingSeparator(exe.parent_path().string());
}

#else

bool BatchProcess::Running() {
  if (id_ <= 0) return false;
  HANDLE process = reinterpret_cast<HANDLE>(id_);
  if (WaitForSingleObject(process, 0) == WAIT_TIMEOUT) return true;
  CloseHandle(process);
  id_ = 0;
  ended_ = true;
  return false;
}

BatchProcess StartHiddenBatch(const std::string& batch_file, const std::string& working_folder,
                              const std::string& /*program_folder*/,
                              const std::vector<std::string>& /*environment*/) {
  std::string command = "cmd.exe /c \"" + batch_file + "\"";
  STARTUPINFOA startup{};
  startup.cb = sizeof startup;
  startup.dwFlags = STARTF_USESHOWWINDOW;
  startup.wShowWindow = SW_HIDE;
  PROCESS_INFORMATION info{};
  if (!CreateProcessA(nullptr, command.data(), nullptr, nullptr, FALSE, CREATE_NO_WINDOW, nullptr,
                      working_folder.c_str(), &startup, &info)) {
    return {};
  }
  CloseHandle(info.hThread);
  return BatchProcess(reinterpret_cast<long>(info.hProcess));
}

bool StartProgram(const std::string& name) {
  return reinterpret_cast<INT_PTR>(
             ShellExecuteA(nullptr, "open", name.c_str(), nullptr, nullptr, SW_SHOWNORMAL)) > 32;
}

std::string ExecutableFolder() {
  char buffer[MAX_PATH];
  const DWORD n = GetModuleFileNameA(nullptr, buffer, MAX_PATH);
  if (n == 0) return {};
  return WithTrailingSeparator(
      std::filesystem::path(std::string(buffer, n)).parent_path().string());
}

#endif

std::string HelperFolder() {
  if (const char* folder = std::getenv("CORVANET_HELPER_DIR");
      folder != nullptr && *folder != '\0') {
    return WithTrailingSeparator(folder);
  }
  const std::string program_folder = ExecutableFolder();
#ifdef CORVANET_HELPERS_FROM_BIN
  // Installed, the helpers are kept apart from the programs a user starts; in the build tree they
  // sit beside them.
  const std::string installed = program_folder + CORVANET_HELPERS_FROM_BIN;
  std::error_code ec;
  if (std::filesystem::exists(installed + "Complete.exe", ec)) return installed;
#endif
  return program_folder;
}

}  // namespace corvanet
