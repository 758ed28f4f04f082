#pragma once
// What the tests ask of the system itself, once per system (child_process_posix.cpp,
// child_process_win32.cpp): programs started and stopped, and who may open a file.
#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace corvanet::test {

// A started program: its process id on POSIX, its process handle on Windows; -1 for none.
using ChildId = std::intptr_t;

// Starts `path` with no input and its standard output and error appended to the given files, in
// `folder` (empty: this process's). Throws std::runtime_error when it cannot be started.
ChildId SpawnChild(const std::string& path, const std::vector<std::string>& args,
                   const std::string& out_file, const std::string& err_file,
                   const std::string& folder = "");
// True once the child has ended; `exit_code` then holds its status (-1 when it was killed). Each
// child is reaped by the first call that sees it ended.
bool ChildEnded(ChildId child, int& exit_code);
// Waits for the child to end; its exit status, or -1 when it was killed or did not end in time
// (it is then killed).
int WaitForChild(ChildId child, std::chrono::milliseconds limit);
// Asks the child to stop (SIGTERM; on Windows, where no such request exists, it is ended at once).
void StopChild(ChildId child);
// Ends it without asking (SIGKILL, TerminateProcess) and reaps it.
void KillChild(ChildId child);
long CurrentProcessId();
// Sets an environment variable of this process, unless it is set already.
void SetEnvironmentDefault(const std::string& name, const std::string& value);
// Renames `from` over `to` in one step.
bool RenameOver(const std::string& from, const std::string& to);

// A program run to its end from `folder` with `environment` ("NAME=value"; an empty value unsets
// it) added to this process's: its exit status (124 when it ran past `time_limit` seconds, 0: no
// limit, and was ended), its standard output and error, kept meanwhile in `scratch` (a folder).
struct ProgramRun {
  int code = -1;
  std::string out;
  std::string err;
};
ProgramRun RunProgram(const std::string& path, const std::vector<std::string>& args,
                      const std::vector<std::string>& environment, const std::string& folder,
                      const std::string& scratch, int time_limit = 0);
// The words of a command's text as a POSIX shell splits it: blanks between words, single quotes
// around a word with blanks.
std::vector<std::string> ShellWords(const std::string& text);

// Takes the run lock of the program folder `folder` as another process's run would, with its note
// `note` ("18:02:11 4242"): flock on POSIX, LockFileEx on Windows, each where run_lock_*.cpp
// takes it. The returned handle releases it with ReleaseForeignRunLock.
std::intptr_t HoldForeignRunLock(const std::string& folder, const std::string& note);
void ReleaseForeignRunLock(std::intptr_t lock);
// Makes a FIFO at `path`; false where the file system has none (Windows).
bool MakeFifo(const std::string& path);

// True when only the file's owner may read or write it: mode 0600 on POSIX; on Windows an access
// list, not inherited, whose one entry is the current user's.
bool IsOwnerOnly(const std::string& path);
// Lets others read the file (mode 0644; an entry for Everyone), as a careless copy would.
void OpenToOthers(const std::string& path);

}  // namespace corvanet::test
