// schedule N --at HH:MM [--days DAYS], schedule --list, schedule --remove N on Windows: a task of
// the Task Scheduler per list, made and removed by `schtasks`. Where schtasks cannot make it, the
// command that would is printed for the user to run.
#include <windows.h>

#include <algorithm>
#include <string>
#include <vector>

#include "cli/commands.h"
#include "cli/schedule_units.h"
#include "core/platform/process.h"
#include "core/platform/windows_text.h"

namespace corvanet::cli {

namespace {

constexpr int kLastList = 7;

// schtasks ARGS, its output kept in `output` when asked; its exit status, or -1 when it could not
// be started.
int Schtasks(const std::vector<std::string>& args, std::string* output = nullptr) {
  std::string line = "schtasks.exe";
  for (const std::string& arg : args) line += " " + QuotedForCommandLine(arg);
  std::wstring command = windows::Wide(line);
  SECURITY_ATTRIBUTES inherit{sizeof inherit, nullptr, TRUE};
  HANDLE read_end = nullptr;
  HANDLE write_end = nullptr;
  if (!CreatePipe(&read_end, &write_end, &inherit, 0)) return -1;
  SetHandleInformation(read_end, HANDLE_FLAG_INHERIT, 0);
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
  startup.hStdOutput = write_end;
  startup.hStdError = write_end;
  PROCESS_INFORMATION info{};
  const bool started = CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE,
                                      CREATE_NO_WINDOW, nullptr, nullptr, &startup, &info);
  CloseHandle(write_end);
  if (!started) {
    CloseHandle(read_end);
    return -1;
  }
  // Read until schtasks ends, not until its pipe closes: a process it starts may inherit the
  // pipe's write end and keep it open long after (under Wine, the desktop process started on a
  // prefix's first window station does, and the read never ended).
  std::string text;
  const auto drain = [&] {
    char chunk[4096];
    DWORD available = 0;
    DWORD got = 0;
    while (PeekNamedPipe(read_end, nullptr, 0, nullptr, &available, nullptr) && available > 0 &&
           ReadFile(read_end, chunk, std::min<DWORD>(available, sizeof chunk), &got, nullptr) &&
           got > 0) {
      text.append(chunk, got);
    }
  };
  while (WaitForSingleObject(info.hProcess, 20) == WAIT_TIMEOUT) drain();
  drain();
  CloseHandle(read_end);
  DWORD code = 1;
  GetExitCodeProcess(info.hProcess, &code);
  CloseHandle(info.hProcess);
  CloseHandle(info.hThread);
  if (output != nullptr) *output = std::move(text);
  return static_cast<int>(code);
}

std::string CommandText(const std::vector<std::string>& args) {
  std::string text = "schtasks";
  for (const std::string& arg : args) text += " " + QuotedForCommandLine(arg);
  return text;
}

int Install(CommandContext& context, const CommandLine& line) {
  ScheduledRun run;
  run.list = line.list;
  ParseTimeOfDay(line.schedule.at, run.hour, run.minute);
  if (!line.schedule.days.empty()) ParseDays(line.schedule.days, run.days);
  run.program = ExecutableFolder() + "corvanet-cli.exe";
  run.base_directory = context.session.app.BaseDirectory;
  run.program_directory = context.session.app.ProgramDirectory;
  if (const std::string problem = ScheduleProblem(run); !problem.empty()) {
    context.err << "corvanet-cli schedule: " << problem << "; nothing was scheduled.\n";
    return kExitRefused;
  }
  const std::vector<std::string> args = SchtasksCreateArguments(run);
  if (Schtasks(args) != 0) {
    context.out << "The Task Scheduler did not take the task; run this command instead:\n"
                << CommandText(args) << '\n';
    return kExitOk;
  }
  context.out << "List " << run.list << " runs at " << args.back() << " (task \""
              << TaskName(run.list) << "\" of the Task Scheduler).\n";
  return kExitOk;
}

// A task exists when schtasks describes it by name: a status of 0 alone is not enough (Wine's
// schtasks answers every query so, with nothing printed).
bool TaskExists(int list) {
  std::string answer;
  return Schtasks({"/Query", "/TN", TaskName(list), "/FO", "LIST"}, &answer) == 0 &&
         answer.find(TaskName(list)) != std::string::npos;
}

int Show(CommandContext& context) {
  bool any = false;
  for (int list = 1; list <= kLastList; ++list) {
    if (!TaskExists(list)) continue;
    any = true;
    context.out << TaskName(list) << '\n';
  }
  if (!any) context.out << "No list is scheduled in the Task Scheduler.\n";
  return kExitOk;
}

int Remove(CommandContext& context, int list) {
  if (!TaskExists(list)) {
    context.out << "List " << list << " has no schedule in the Task Scheduler.\n";
    return kExitOk;
  }
  if (Schtasks({"/Delete", "/F", "/TN", TaskName(list)}) != 0) {
    context.err << "corvanet-cli schedule: schtasks could not remove \"" << TaskName(list)
                << "\"\n";
    return kExitStartupFailed;
  }
  context.out << "The schedule of list " << list << " is removed.\n";
  return kExitOk;
}

}  // namespace

int ScheduleCommand(CommandContext& context, const CommandLine& line) {
  if (line.schedule.show) return Show(context);
  if (line.schedule.remove != 0) return Remove(context, line.schedule.remove);
  return Install(context, line);
}

}  // namespace corvanet::cli
