// schedule N --at HH:MM [--days DAYS], schedule --list, schedule --remove N: the unattended run of
// a list at a time of day, by a systemd user timer, or by cron where no user systemd runs.
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <vector>

#include "cli/commands.h"
#include "cli/schedule_units.h"
#include "core/platform/files.h"
#include "core/platform/line_reader.h"
#include "core/platform/paths.h"
#include "core/platform/process.h"

extern char** environ;

namespace corvanet::cli {

namespace {

namespace fs = std::filesystem;

// The folder systemd reads a user's own units from.
fs::path UserUnitFolder() {
  if (const char* config = std::getenv("XDG_CONFIG_HOME"); config != nullptr && *config == '/') {
    return fs::path(config) / "systemd/user";
  }
  const char* home = std::getenv("HOME");
  return fs::path(home != nullptr ? home : ".") / ".config/systemd/user";
}

// systemctl --user ARGS; its exit status, or -1 when it could not be started. `quiet` sends its
// output away.
int Systemctl(std::vector<std::string> args, bool quiet) {
  args.insert(args.begin(), {"systemctl", "--user"});
  std::vector<char*> argv;
  for (std::string& arg : args) argv.push_back(arg.data());
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  if (quiet) {
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  }
  pid_t pid = 0;
  const int spawned = posix_spawnp(&pid, "systemctl", &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (spawned != 0) return -1;
  int status = 0;
  while (waitpid(pid, &status, 0) < 0) {
    if (errno != EINTR) return -1;
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// A user's service manager answers only where the user has a session of systemd; in containers,
// over plain su and on machines without systemd there is none, and cron does the work instead.
bool UserSystemdRunning() {
  return Systemctl({"show-environment"}, true) == 0;
}

// Line by line, so the file ends its lines with CR LF as every file of the program does; systemd
// reads them so.
bool WriteUnitFile(const std::string& path, std::string_view text) {
  AtomicFileWriter writer(path);
  std::size_t start = 0;
  while (start < text.size()) {
    const std::size_t end = text.find('\n', start);
    writer.WriteLine(text.substr(start, end - start));
    start = end + 1;
  }
  return writer.Commit();
}

int Install(CommandContext& context, const CommandLine& line) {
  ScheduledRun run;
  run.list = line.list;
  ParseTimeOfDay(line.schedule.at, run.hour, run.minute);
  if (!line.schedule.days.empty()) ParseDays(line.schedule.days, run.days);
  run.program = ExecutableFolder() + "corvanet-cli";
  run.base_directory = context.session.app.BaseDirectory;
  run.program_directory = context.session.app.ProgramDirectory;
  std::ostream& out = context.out;
  if (const std::string problem = ScheduleProblem(run); !problem.empty()) {
    context.err << "corvanet-cli schedule: " << problem << "; nothing was scheduled.\n";
    return kExitRefused;
  }
  if (!UserSystemdRunning()) {
    out << "No systemd user instance runs here; add this line with 'crontab -e' instead:\n"
        << CrontabLine(run) << '\n';
    return kExitOk;
  }
  const fs::path folder = UserUnitFolder();
  const std::string name = UnitName(run.list);
  std::error_code ec;
  fs::create_directories(folder, ec);
  if (!WriteUnitFile((folder / (name + ".service")).string(), ServiceUnitText(run)) ||
      !WriteUnitFile((folder / (name + ".timer")).string(), TimerUnitText(run))) {
    context.err << "corvanet-cli schedule: could not write the unit files in " << folder.string()
                << '\n';
    return kExitStartupFailed;
  }
  if (Systemctl({"daemon-reload"}, false) != 0 ||
      Systemctl({"enable", "--now", name + ".timer"}, false) != 0) {
    context.err << "corvanet-cli schedule: systemctl --user could not start " << name << ".timer\n";
    return kExitStartupFailed;
  }
  out << "List " << run.list << " runs " << CalendarText(run) << " (" << name << ".timer in "
      << folder.string() << ").\n";
  return kExitOk;
}

int Show(CommandContext& context) {
  const fs::path folder = UserUnitFolder();
  std::vector<std::string> lines;
  std::error_code ec;
  for (const auto& entry : fs::directory_iterator(folder, ec)) {
    const std::string file = entry.path().filename().string();
    if (!file.starts_with("corvanet-list-") || !file.ends_with(".timer")) continue;
    std::string calendar;
    LineReader reader(entry.path().string());
    std::string_view unit_line;
    while (reader.Next(unit_line)) {
      if (unit_line.starts_with("OnCalendar=")) calendar = unit_line.substr(11);
    }
    lines.push_back(file + "  " + calendar);
  }
  std::sort(lines.begin(), lines.end());
  if (lines.empty()) {
    context.out << "No list is scheduled in " << folder.string()
                << " (schedules kept by cron: crontab -l).\n";
  }
  for (const std::string& text : lines) context.out << text << '\n';
  return kExitOk;
}

int Remove(CommandContext& context, int list) {
  const fs::path folder = UserUnitFolder();
  const std::string name = UnitName(list);
  const fs::path timer = folder / (name + ".timer");
  if (!fs::exists(timer)) {
    context.out << "List " << list << " has no schedule in " << folder.string()
                << " (schedules kept by cron: crontab -e).\n";
    return kExitOk;
  }
  const bool systemd = UserSystemdRunning();
  if (systemd) Systemctl({"disable", "--now", name + ".timer"}, false);
  std::error_code ec;
  fs::remove(timer, ec);
  if (!ec) fs::remove(folder / (name + ".service"), ec);
  if (ec) {
    context.err << "corvanet-cli schedule: could not remove " << name << ": " << ec.message()
                << '\n';
    return kExitStartupFailed;
  }
  if (systemd) Systemctl({"daemon-reload"}, false);
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
