#include "cli/schedule_units.h"

#include <vector>

#include "core/platform/paths.h"
#include "core/platform/process.h"
#include "core/platform/text.h"

namespace corvanet::cli {

namespace {

constexpr std::array<std::string_view, 7> kDayNames{"monday", "tuesday",  "wednesday", "thursday",
                                                    "friday", "saturday", "sunday"};
constexpr std::array<std::string_view, 7> kCalendarDays{"Mon", "Tue", "Wed", "Thu",
                                                        "Fri", "Sat", "Sun"};

int DayIndex(std::string_view word) {
  for (std::size_t i = 0; i < kDayNames.size(); ++i) {
    if (word.size() >= 3 && word.size() <= kDayNames[i].size() &&
        EqualsIgnoreCase(word, kDayNames[i].substr(0, word.size()))) {
      return static_cast<int>(i);
    }
  }
  return -1;
}

// Runs of consecutive days as (first, last), Monday first; a whole week is one run.
std::vector<std::pair<int, int>> DayRuns(const WeekDays& days) {
  std::vector<std::pair<int, int>> runs;
  for (int i = 0; i < 7; ++i) {
    if (!days[i]) continue;
    if (!runs.empty() && runs.back().second == i - 1) {
      runs.back().second = i;
    } else {
      runs.emplace_back(i, i);
    }
  }
  return runs;
}

bool EveryDay(const WeekDays& days) {
  for (const bool day : days) {
    if (!day) return false;
  }
  return true;
}

// systemd takes the whole line apart itself: each word in double quotes, with `\`, `"`, the
// specifier `%` and the variable sign `$` made literal.
std::string SystemdWord(std::string_view word) {
  std::string quoted = "\"";
  for (const char c : word) {
    if (c == '\\' || c == '"') quoted += '\\';
    if (c == '%') quoted += '%';
    if (c == '$') quoted += '$';
    quoted += c;
  }
  return quoted + '"';
}

std::string SystemdPath(std::string_view path) {
  std::string escaped;
  for (const char c : path) {
    if (c == '%') escaped += '%';
    escaped += c;
  }
  return escaped;
}

// Single quotes for the shell; cron itself turns an unescaped `%` into a line break.
std::string CronWord(std::string_view word) {
  std::string quoted = "'";
  for (const char c : word) {
    if (c == '\'') {
      quoted += "'\\''";
    } else {
      if (c == '%') quoted += '\\';
      quoted += c;
    }
  }
  return quoted + '\'';
}

std::string TwoDigits(int n) {
  return (n < 10 ? "0" : "") + std::to_string(n);
}

std::string DaysInWords(const WeekDays& days) {
  if (EveryDay(days)) return "every day";
  std::string text;
  for (const auto& [first, last] : DayRuns(days)) {
    if (!text.empty()) text += ',';
    text += kCalendarDays[first];
    if (last != first) text += last == first + 1 ? "," : "-";
    text += kCalendarDays[last];
  }
  return text;
}

}  // namespace

bool ParseDays(std::string_view text, WeekDays& days) {
  days = {};
  const std::string_view trimmed = Trim(text);
  if (EqualsIgnoreCase(trimmed, "daily") || EqualsIgnoreCase(trimmed, "all")) {
    days.fill(true);
    return true;
  }
  std::size_t start = 0;
  for (;;) {
    const std::size_t comma = trimmed.find(',', start);
    const std::string_view part = Trim(trimmed.substr(start, comma - start));
    const std::size_t dash = part.find('-');
    const int first = DayIndex(Trim(part.substr(0, dash)));
    const int last = dash == std::string_view::npos ? first : DayIndex(Trim(part.substr(dash + 1)));
    if (first < 0 || last < 0) return false;
    for (int day = first;; day = (day + 1) % 7) {
      days[day] = true;
      if (day == last) break;
    }
    if (comma == std::string_view::npos) return true;
    start = comma + 1;
  }
}

bool ParseTimeOfDay(std::string_view text, int& hour, int& minute) {
  const std::size_t colon = text.find(':');
  if (colon == std::string_view::npos || colon == 0 || colon > 2 || text.size() != colon + 3) {
    return false;
  }
  for (const char c : text) {
    if (c != ':' && (c < '0' || c > '9')) return false;
  }
  hour = std::stoi(std::string(text.substr(0, colon)));
  minute = std::stoi(std::string(text.substr(colon + 1)));
  return hour <= 23 && minute <= 59;
}

std::string ScheduleProblem(const ScheduledRun& run) {
  for (const std::string* path : {&run.program, &run.base_directory, &run.program_directory}) {
    if (HasControlCharacter(*path)) {
      return "a path of the run holds a line break or another control character, which no "
             "scheduled command can hold";
    }
  }
  return {};
}

std::string UnitName(int list) {
  return "corvanet-list-" + std::to_string(list);
}

std::string CalendarText(const ScheduledRun& run) {
  std::string days;
  if (!EveryDay(run.days)) {
    for (const auto& [first, last] : DayRuns(run.days)) {
      if (!days.empty()) days += ',';
      days += kCalendarDays[first];
      if (last != first) days.append("..").append(kCalendarDays[last]);
    }
    days += ' ';
  }
  return days + "*-*-* " + TwoDigits(run.hour) + ":" + TwoDigits(run.minute) + ":00";
}

std::string TimerUnitText(const ScheduledRun& run) {
  const std::string n = std::to_string(run.list);
  return "# Written by corvanet-cli schedule; 'corvanet-cli schedule --remove " + n +
         "' removes it.\n"
         "[Unit]\n"
         "Description=Corvanet: download list " +
         n + " at " + TwoDigits(run.hour) + ":" + TwoDigits(run.minute) + ", " +
         DaysInWords(run.days) +
         "\n"
         "\n"
         "[Timer]\n"
         "OnCalendar=" +
         CalendarText(run) +
         "\n"
         // A run missed while the machine was off is made up at the next start.
         "Persistent=true\n"
         "Unit=" +
         UnitName(run.list) +
         ".service\n"
         "\n"
         "[Install]\n"
         "WantedBy=timers.target\n";
}

// `run N` from the program folder rather than RunListNum.txt and a start with no command: the run
// is the same (RunListNum only selects the list, and the start-up report lands in the same
// folder), but two lists due at the same minute cannot overwrite each other's RunListNum.txt, and
// a RunListNum.txt left for a start by hand is not consumed by the timer.
std::string ServiceUnitText(const ScheduledRun& run) {
  const std::string n = std::to_string(run.list);
  return "# Written by corvanet-cli schedule; 'corvanet-cli schedule --remove " + n +
         "' removes it.\n"
         "[Unit]\n"
         "Description=Corvanet: unattended run of download list " +
         n +
         "\n"
         "\n"
         "[Service]\n"
         "Type=oneshot\n"
         "WorkingDirectory=" +
         SystemdPath(run.program_directory) +
         "\n"
         "ExecStart=" +
         SystemdWord(run.program) + " --base-dir " + SystemdWord(run.base_directory) + " run " + n +
         "\n";
}

std::string CrontabLine(const ScheduledRun& run) {
  std::string days = "*";
  if (!EveryDay(run.days)) {
    days.clear();
    // cron counts Monday as 1 and takes 7 for Sunday, so a week starting Monday stays one range.
    for (const auto& [first, last] : DayRuns(run.days)) {
      if (!days.empty()) days += ',';
      days += std::to_string(first + 1);
      if (last != first) days += "-" + std::to_string(last + 1);
    }
  }
  return std::to_string(run.minute) + " " + std::to_string(run.hour) + " * * " + days + " cd " +
         CronWord(run.program_directory) + " && " + CronWord(run.program) + " --base-dir " +
         CronWord(run.base_directory) + " run " + std::to_string(run.list);
}

}  // namespace corvanet::cli

namespace corvanet::cli {

std::string TaskName(int list) {
  return "Corvanet list " + std::to_string(list);
}

std::vector<std::string> SchtasksCreateArguments(const ScheduledRun& run) {
  // The folder without its closing backslash, which would escape the quote after it.
  std::string base = run.base_directory;
  while (base.size() > 3 && (base.back() == '\\' || base.back() == '/')) base.pop_back();
  const std::string command = QuotedForCommandLine(run.program) + " --base-dir " +
                              QuotedForCommandLine(base) + " run " + std::to_string(run.list);
  std::vector<std::string> args = {"/Create", "/F", "/TN", TaskName(run.list), "/TR", command};
  if (EveryDay(run.days)) {
    args.insert(args.end(), {"/SC", "DAILY"});
  } else {
    std::string days;
    for (std::size_t i = 0; i < run.days.size(); ++i) {
      if (!run.days[i]) continue;
      if (!days.empty()) days += ',';
      for (const char c : kDayNames[i].substr(0, 3)) days += static_cast<char>(c - 'a' + 'A');
    }
    args.insert(args.end(), {"/SC", "WEEKLY", "/D", days});
  }
  args.insert(args.end(), {"/ST", TwoDigits(run.hour) + ":" + TwoDigits(run.minute)});
  return args;
}

}  // namespace corvanet::cli
