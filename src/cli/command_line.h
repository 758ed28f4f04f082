#pragma once
// The command line of corvanet-cli, read by CLI11: global options, one command and its arguments.
// Help, the version and usage errors end here, before anything of the installation is touched.
#include <cstddef>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace corvanet::cli {

struct ScheduleRequest {
  std::string at;     // "HH:MM" when a list is scheduled
  std::string days;   // "mon-fri", "sat,sun", ...; "" = every day
  bool show = false;  // --list
  int remove = 0;     // --remove N
};

struct IndicatorsRequest {
  std::string symbol;
  std::string period = "D";  // a letter or a period's name
  std::string from;          // a date as ParseBarDate reads it; "" = the first bar
  std::string to;
  std::size_t last = 0;  // 0 = every bar of the range
  std::string only;      // indicator names, comma-separated; "" = all
};

struct CommandLine {
  std::string base_directory;  // with a trailing separator; "" = the default
  bool log = false;
  bool yes = false;
  bool quiet = false;
  std::string command;             // "" = no command
  int list = 0;                    // the list number of run, stats, list and schedule
  std::vector<std::string> words;  // list edits, settings pairs
  bool password_stdin = false;     // settings: the password is read from standard input
  ScheduleRequest schedule;
  IndicatorsRequest indicators;
};

// The exit statuses, one line each, as --help and the manual page show them.
std::string_view ExitStatusText();

// False when the program should end now with `status`: help or the version was printed (0), or a
// usage error naming the bad argument (kExitUsage).
bool ParseCommandLine(const std::vector<std::string>& args, CommandLine& line, std::ostream& out,
                      std::ostream& err, int& status);

}  // namespace corvanet::cli
