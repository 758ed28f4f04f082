// Starting programs on POSIX: fork and exec, the batch files under sh.
#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <thread>
#include <vector>

#include "core/platform/paths.h"
#include "core/platform/process.h"
#include "core/platform/run_lock.h"

extern char** environ;

namespace corvanet {

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
  // read into words with the shell's quoting and wildcards off, then run: the arguments are
  // written in single quotes (QuoteBatchArgument), so "$NYA" or two blanks in a path stay as
  // they are.
  const std::string script =
      "Call() { \"$@\"; }\n"
      "set -f\n"
      "tr -d '\\r' < \"$1\" | while IFS= read -r line || [ -n \"$line\" ]; do\n"
      "  eval \"set -- $line\"\n"
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

std::string QuoteBatchArgument(std::string_view argument) {
  std::string quoted = "'";
  for (const char c : argument) {
    if (c == '\'') {
      quoted += "'\\''";  // close the quotes, an escaped quote, open them again
    } else {
      quoted += c;
    }
  }
  quoted += '\'';
  return quoted;
}

namespace {

// The first executable file `name` in the folders of `folders` (a PATH value); "" when none.
std::string FindProgram(const std::string& name, std::string_view folders) {
  for (;;) {
    const std::size_t colon = folders.find(':');
    const std::string candidate =
        WithTrailingSeparator(std::string(folders.substr(0, colon))) + name;
    if (::access(candidate.c_str(), X_OK) == 0) return candidate;
    if (colon == std::string_view::npos) return {};
    folders.remove_prefix(colon + 1);
  }
}

std::string SearchPath() {
  const char* path = std::getenv("PATH");
  return path != nullptr ? path : "/usr/bin:/bin";
}

// Runs `program` with one argument, its standard output collected into `output` (the first few
// kilobytes), and waits for it for at most `limit`. The exit status, or -1 when it could not be
// run, was killed by a signal or did not end in time (it is then killed).
int RunAndCollect(const std::string& program, const char* argument, std::string& output,
                  std::chrono::milliseconds limit) {
  int pipe_ends[2];
  if (::pipe(pipe_ends) != 0) return -1;
  const char* argv[] = {program.c_str(), argument, nullptr};
  const pid_t child = ::fork();
  if (child < 0) {
    ::close(pipe_ends[0]);
    ::close(pipe_ends[1]);
    return -1;
  }
  if (child == 0) {
    const int quiet = ::open("/dev/null", O_RDWR);
    if (quiet >= 0) {
      ::dup2(quiet, 0);
      ::dup2(quiet, 2);
    }
    ::dup2(pipe_ends[1], 1);
    ::execv(program.c_str(), const_cast<char* const*>(argv));
    ::_exit(127);
  }
  ::close(pipe_ends[1]);
  ::fcntl(pipe_ends[0], F_SETFL, O_NONBLOCK);
  const auto deadline = std::chrono::steady_clock::now() + limit;
  int status = 0;
  bool ended = false;
  char buffer[4096];
  while (!ended) {
    for (ssize_t n = 0; (n = ::read(pipe_ends[0], buffer, sizeof buffer)) > 0;) {
      if (output.size() < 8192) output.append(buffer, static_cast<std::size_t>(n));
    }
    ended = ::waitpid(child, &status, WNOHANG) == child;
    if (!ended && std::chrono::steady_clock::now() > deadline) {
      ::kill(child, SIGKILL);
      ::waitpid(child, &status, 0);
      ::close(pipe_ends[0]);
      return -1;
    }
    if (!ended) std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  for (ssize_t n = 0; (n = ::read(pipe_ends[0], buffer, sizeof buffer)) > 0;) {
    if (output.size() < 8192) output.append(buffer, static_cast<std::size_t>(n));
  }
  ::close(pipe_ends[0]);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace

std::string ConverterProblem(const std::string& program_folder) {
  const std::string folders = program_folder + ":" + SearchPath();
  for (const char* helper : {"PxFiles", "Complete.exe"}) {
    if (FindProgram(helper, folders).empty()) {
      return std::string(helper) + " was not found in " + program_folder + " nor on the PATH";
    }
  }
  const std::string converter = FindProgram("PxFiles", folders);
  std::string usage;
  const int status = RunAndCollect(converter, "--help", usage, std::chrono::seconds(10));
  if (status != 0 || usage.rfind("usage: PxFiles", 0) != 0) {
    return converter + " does not answer as the converter (asked for its usage, it " +
           (status < 0 ? std::string("failed or did not end")
                       : "ended with status " + std::to_string(status)) +
           ")";
  }
  return {};
}

bool StartProgram(const std::string& name) {
  if (name.empty() || name.find('/') != std::string::npos) return false;
  const std::string found = FindProgram(name, SearchPath());
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

std::string HomeFolder() {
  const char* home = std::getenv("HOME");
  return home != nullptr && *home != '\0' ? WithTrailingSeparator(home) : std::string();
}

const char* const kSystemBaseDirectoryRule = "~/Tessaly";

std::string SystemBaseDirectory() {
  const std::string home = HomeFolder();
  return (home.empty() ? Folder(".") : home) + Folder("Tessaly");
}

}  // namespace corvanet
