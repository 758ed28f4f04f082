#include "cli/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <ostream>

#include "cli/cli.h"
#include "cli/schedule_units.h"
#include "core/indicators/indicator_table.h"
#include "core/indicators/symbol_datafile.h"
#include "core/platform/paths.h"
#include "core/platform/process.h"

namespace corvanet::cli {

namespace {

constexpr std::string_view kExitStatuses =
    "Exit status:\n"
    "  0  done\n"
    "  1  the system failed: the installation could not be created, or a schedule could not be\n"
    "     installed or removed\n"
    "  2  usage error: an unknown command or option, or a bad argument\n"
    "  3  the work finished with failures, each one listed (a datafile not updated, a statistic\n"
    "     file not made, a converter batch that failed, the master file not refreshed)\n"
    "  4  refused by one of the program's checks; nothing was changed (no credentials, no vendor\n"
    "     or period ticked, a full list changed by hand...), or a run that never started\n"
    "  5  another run holds the installation; try again when it has ended\n";

constexpr std::string_view kDescription =
    "Keeps the local library of market-breadth datafiles current from the data service.\n"
    "With no command: when RunListNum.txt in the current folder names a list (1-7), that list\n"
    "is run unattended; otherwise the installation's folders and files are listed.\n"
    "'corvanet-cli COMMAND --help' tells more of each command.";

// Errors of CLI11 are worded for a generic program; the name of the command in front tells which
// help to read.
void PrintUsageError(const CLI::App& app, const CLI::Error& error, std::ostream& err) {
  std::string where = "corvanet-cli";
  for (const CLI::App* sub : app.get_subcommands()) where += " " + sub->get_name();
  err << where << ": " << error.what() << "\nRun '" << where << " --help' for more.\n";
}

CLI::Validator TimeOfDayValidator() {
  return CLI::Validator(
      [](std::string& text) -> std::string {
        int hour = 0;
        int minute = 0;
        return ParseTimeOfDay(text, hour, minute) ? ""
                                                  : "expected HH:MM (00:00 to 23:59), not " + text;
      },
      "HH:MM");
}

CLI::Validator DaysValidator() {
  return CLI::Validator(
      [](std::string& text) -> std::string {
        WeekDays days{};
        return ParseDays(text, days)
                   ? ""
                   : "expected days such as mon-fri, sat,sun or daily, not " + text;
      },
      "DAYS");
}

CLI::Validator PeriodValidator() {
  return CLI::Validator(
      [](std::string& text) -> std::string {
        return PeriodOfLetterOrName(text).empty() ? "expected D, W, M or Q, not " + text : "";
      },
      "D|W|M|Q");
}

CLI::Validator DateValidator() {
  return CLI::Validator(
      [](std::string& text) -> std::string {
        std::int32_t date = 0;
        return ParseBarDate(text, date) ? "" : "expected YYYY-MM-DD or YYYYMMDD, not " + text;
      },
      "DATE");
}

void AddListNumber(CLI::App& command, int& list, const std::string& what) {
  command.add_option("N", list, what)
      ->required()
      ->check(CLI::Range(1, 7).description(""))
      ->type_name("1-7");
}

// A line for the list of commands, and what the command's own help adds to it.
CLI::App* AddCommand(CLI::App& app, const std::string& name, const std::string& summary,
                     const std::string& details) {
  CLI::App* command = app.add_subcommand(name, summary);
  command->footer(details);
  return command;
}

void AddCommands(CLI::App& app, CommandLine& line) {
  CLI::App* clear = AddCommand(
      app, "clear-datafiles", "Delete the datafiles of every period folder",
      "The datafiles of the data folder and its four period folders are deleted; the base copies\n"
      "and every other file stay.");
  CLI::App* list = AddCommand(
      app, "list", "Print download list N, or edit and save it",
      "With no edit the list's items are printed. Edits, applied in order, every one checked\n"
      "before anything changes:\n"
      "  add TEXT        every issue of the master file whose name holds TEXT\n"
      "  move-all        the whole master file\n"
      "  clear           nothing\n"
      "  remove ITEM     one item, as printed\n"
      "  vendor NAME     eSignal, Reuters, Yahoo or Other\n"
      "  periods D,W,M,Q the periods, by letter or name\n"
      "Lists 6 (All Daily) and 7 (All Periods) take only a vendor and periods.");
  AddListNumber(*list, line.list, "the download list (6 All Daily, 7 All Periods)");
  list->add_option("EDIT", line.words, "the edits and their arguments");
  CLI::App* refresh = AddCommand(
      app, "refresh-masterfile", "Fetch the master file and check the lists against it",
      "The new master file is installed only when it reads whole; the old one stays otherwise.");
  CLI::App* run = AddCommand(
      app, "run", "Bring every datafile of download list N up to date",
      "Fetches from the data service, then makes what the settings ask for (single-statistic\n"
      "files, price files). The summary names each datafile that failed. While it works, a\n"
      "progress line is drawn when standard error is a terminal.");
  AddListNumber(*run, line.list, "the download list (6 All Daily, 7 All Periods)");
  CLI::App* settings = AddCommand(
      app, "settings", "Print the settings, or change some and save them",
      "Each KEY=VALUE sets a control as the window would; all are checked before any changes.\n"
      "A relative folder is taken relative to the installation. The password is printed masked;\n"
      "give it with --password-stdin rather than as Password=..., which other users of the\n"
      "machine can see in the list of processes.");
  settings->add_option("KEY=VALUE", line.words, "the settings to change");
  settings->add_flag("--password-stdin", line.password_stdin,
                     "read the password from the first line of standard input (asked for without "
                     "echo at a terminal)");
  CLI::App* stats =
      AddCommand(app, "stats", "Make the single-statistic files of download list N now",
                 "The files are made from the datafiles on disk; nothing is fetched.");
  AddListNumber(*stats, line.list, "the download list (6 All Daily, 7 All Periods)");
  CLI::App* schedule = AddCommand(
      app, "schedule", "Run a list unattended at a time of day",
      "Installs a systemd user timer and service (corvanet-list-N) that run the list; a run\n"
      "missed while the machine was off is made up at the next start. Where no systemd user\n"
      "instance runs, prints the crontab line that does the same instead.\n"
      "Examples: schedule 1 --at 18:30 --days mon-fri; schedule --list; schedule --remove 1");
  schedule->add_option("N", line.list, "the download list to run")
      ->check(CLI::Range(1, 7).description(""))
      ->type_name("1-7");
  CLI::Option* at = schedule->add_option("--at", line.schedule.at, "the time of day, 24-hour")
                        ->check(TimeOfDayValidator());
  schedule
      ->add_option("--days", line.schedule.days,
                   "days and ranges: mon-fri, sat,sun, daily (the default)")
      ->check(DaysValidator());
  CLI::Option* show = schedule->add_flag("--list", line.schedule.show, "show the scheduled lists");
  CLI::Option* remove =
      schedule->add_option("--remove", line.schedule.remove, "remove the schedule of list N")
          ->check(CLI::Range(1, 7).description(""))
          ->type_name("1-7");
  show->excludes(at)->excludes(remove);
  remove->excludes(at);
  CLI::App* indicators = AddCommand(
      app, "indicators", "Print the breadth indicators of a datafile as CSV",
      "One row per bar of the datafile of SYMBOL (as a download list names it, e.g. $NYA): its\n"
      "date (YYYYMMDD), then each indicator; an empty field where an indicator has no value.\n"
      "The indicators are worked out from the file's first bar whatever range is printed.\n"
      "Names: NetAdvances ADLine McClellanOscillator SummationIndex McClellanRatioAdjusted\n"
      "SummationRatioAdjusted NetNewHighs HighLowIndex ShareAbove4ma ShareAbove9ma\n"
      "ShareAbove18ma ShareAbove30ma ShareAbove200ma UpDownVolumeRatio TRIN.\n"
      "The help page Indicators.htm gives each formula.");
  IndicatorsRequest& wanted = line.indicators;
  indicators->add_option("SYMBOL", wanted.symbol, "the composite")->required();
  indicators->add_option("--period", wanted.period, "the datafile's period (default D)")
      ->check(PeriodValidator());
  indicators->add_option("--from", wanted.from, "the first date printed")->check(DateValidator());
  indicators->add_option("--to", wanted.to, "the last date printed")->check(DateValidator());
  indicators->add_option("--last", wanted.last, "only the last N bars of that range")
      ->check(CLI::PositiveNumber.description(""))
      ->type_name("N");
  indicators->add_option("--only", wanted.only, "these indicators, in this order")
      ->type_name("NAME,...");

  for (CLI::App* command : {clear, list, refresh, run, settings, stats, schedule, indicators}) {
    command->callback([&line, command] { line.command = command->get_name(); });
    command->fallthrough();
  }
}

}  // namespace

std::string_view ExitStatusText() {
  return kExitStatuses;
}

bool ParseCommandLine(const std::vector<std::string>& args, CommandLine& line, std::ostream& out,
                      std::ostream& err, int& status) {
  CLI::App app(std::string(kDescription), "corvanet-cli");
  app.footer(std::string(kExitStatuses));
  app.set_version_flag("--version", "corvanet-cli " CORVANET_VERSION);
  app.require_subcommand(0, 1);
  std::string base_directory;
  app.add_option("--base-dir", base_directory,
                 "the installation folder (default: $CORVANET_BASE_DIR, else " +
                     std::string(kSystemBaseDirectoryRule) + ")")
      ->type_name("DIR")
      ->check([](const std::string& text) {
        // An empty value would make the file-system root the installation.
        return text.empty() ? std::string("needs a folder") : std::string();
      });
  app.add_flag("--log", line.log, "write a fresh log file (LogFile.txt in the program folder)");
  app.add_flag("--yes", line.yes, "answer Yes to the program's questions (default: No)");
  app.add_flag("-q,--quiet", line.quiet,
               "print nothing but errors (on a failure, the rest too, on standard error)");
  AddCommands(app, line);

  std::vector<std::string> reversed(args.rbegin(), args.rend());
  try {
    app.parse(reversed);
  } catch (const CLI::CallForHelp&) {
    // The help of the command named, if any.
    out << app.help();
    status = kExitOk;
    return false;
  } catch (const CLI::CallForAllHelp&) {
    out << app.help("", CLI::AppFormatMode::All);
    status = kExitOk;
    return false;
  } catch (const CLI::CallForVersion&) {
    out << "corvanet-cli " CORVANET_VERSION "\n";
    status = kExitOk;
    return false;
  } catch (const CLI::ParseError& error) {
    PrintUsageError(app, error, err);
    status = kExitUsage;
    return false;
  }
  const ScheduleRequest& schedule = line.schedule;
  const bool scheduling = line.list != 0 || !schedule.at.empty() || !schedule.days.empty();
  const bool other = schedule.show || schedule.remove != 0;
  if (line.command == "schedule" &&
      (scheduling == other || (scheduling && (line.list == 0 || schedule.at.empty())))) {
    err << "corvanet-cli schedule: give a list and --at HH:MM, or --list, or --remove N\n"
           "Run 'corvanet-cli schedule --help' for more.\n";
    status = kExitUsage;
    return false;
  }
  if (!base_directory.empty()) line.base_directory = WithTrailingSeparator(base_directory);
  return true;
}

}  // namespace corvanet::cli
