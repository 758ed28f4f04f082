#pragma once
// What `schedule` writes: the systemd user timer and service of a list's unattended run, or the
// crontab line that does the same where no user systemd runs. Texts only; no file is touched here.
#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace corvanet::cli {

// Monday first.
using WeekDays = std::array<bool, 7>;

// "mon-fri", "sat,sun", "mon,wed-fri", "daily" (names of three letters or whole, any case; a range
// may wrap past Sunday). False on anything else.
bool ParseDays(std::string_view text, WeekDays& days);
// "18:30", "7:05"; false outside 00:00 to 23:59.
bool ParseTimeOfDay(std::string_view text, int& hour, int& minute);

struct ScheduledRun {
  int list = 0;
  int hour = 0;
  int minute = 0;
  WeekDays days{true, true, true, true, true, true, true};
  std::string program;            // the absolute path of corvanet-cli
  std::string base_directory;     // with a trailing separator
  std::string program_directory;  // where an unattended start finds its files
};

// Why the run cannot be written into a unit file or a crontab line (a path holding a line break or
// another control character, which would end the line and start a command of its own); "" when
// it can. The texts below are made only of runs it accepts.
std::string ScheduleProblem(const ScheduledRun& run);

// "corvanet-list-3": the timer and the service carry it with their suffixes.
std::string UnitName(int list);
// "Mon..Fri *-*-* 18:30:00"
std::string CalendarText(const ScheduledRun& run);
std::string TimerUnitText(const ScheduledRun& run);
std::string ServiceUnitText(const ScheduledRun& run);
std::string CrontabLine(const ScheduledRun& run);

// Windows' Task Scheduler: "Corvanet list 3", and the arguments of `schtasks` that create (or
// replace) the task of a run: a weekly task on its days ("/SC WEEKLY /D MON,FRI") or a daily one.
std::string TaskName(int list);
std::vector<std::string> SchtasksCreateArguments(const ScheduledRun& run);

}  // namespace corvanet::cli
