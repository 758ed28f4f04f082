#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include "support/child_process.h"
#include "support/test_support.h"

extern char** environ;

namespace corvanet::test {

ChildId SpawnChild(const std::string& path, const std::vector<std::string>& args,
                   const std::string& out_file, const std::string& err_file,
                   const std::string& folder) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 1, out_file.c_str(), O_WRONLY | O_CREAT | O_APPEND,
                                   0600);
  posix_spawn_file_actions_addopen(&actions, 2, err_file.c_str(), O_WRONLY | O_CREAT | O_APPEND,
                                   0600);
  if (!folder.empty()) posix_spawn_file_actions_addchdir_np(&actions, folder.c_str());
  std::vector<std::string> words = {path};
  words.insert(words.end(), args.begin(), args.end());
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  pid_t pid = -1;
  const int error = posix_spawn(&pid, path.c_str(), &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) throw std::runtime_error("cannot start " + path);
  return pid;
}

std::intptr_t HoldForeignRunLock(const std::string& folder, const std::string& note) {
  const int fd = ::open((folder + "RunLock.txt").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  if (fd < 0 || ::flock(fd, LOCK_EX) != 0) throw std::runtime_error("cannot lock " + folder);
  const std::string text = note + "\r\n";
  if (::pwrite(fd, text.data(), text.size(), 0) != static_cast<ssize_t>(text.size())) {
    throw std::runtime_error("cannot write the run lock's note");
  }
  return fd;
}

void ReleaseForeignRunLock(std::intptr_t lock) {
  ::close(static_cast<int>(lock));
}

bool MakeFifo(const std::string& path) {
  return ::mkfifo(path.c_str(), 0600) == 0;
}

bool ChildEnded(ChildId child, int& exit_code) {
  int status = 0;
  if (::waitpid(static_cast<pid_t>(child), &status, WNOHANG) != child) return false;
  exit_code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return true;
}

int WaitForChild(ChildId child, std::chrono::milliseconds limit) {
  int exit_code = -1;
  bool ended = false;
  WaitFor([&] { return ended = ChildEnded(child, exit_code); }, limit);
  if (!ended) {
    KillChild(child);
    return -1;
  }
  return exit_code;
}

void StopChild(ChildId child) {
  ::kill(static_cast<pid_t>(child), SIGTERM);
}

void KillChild(ChildId child) {
  int status = 0;
  ::kill(static_cast<pid_t>(child), SIGKILL);
  ::waitpid(static_cast<pid_t>(child), &status, 0);
}

long CurrentProcessId() {
  return static_cast<long>(::getpid());
}

void SetEnvironmentDefault(const std::string& name, const std::string& value) {
  ::setenv(name.c_str(), value.c_str(), 0);
}

bool RenameOver(const std::string& from, const std::string& to) {
  return std::rename(from.c_str(), to.c_str()) == 0;
}

bool IsOwnerOnly(const std::string& path) {
  struct stat info {};
  return ::stat(path.c_str(), &info) == 0 && (info.st_mode & 0777U) == 0600U;
}

void OpenToOthers(const std::string& path) {
  ::chmod(path.c_str(), 0644);
}

}  // namespace corvanet::test
