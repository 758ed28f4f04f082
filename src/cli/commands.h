#pragma once
// One function per command, each in its own file, over the started session.
#include <ostream>
#include <span>
#include <string>
#include <string_view>

#include "cli/cli.h"
#include "core/app/session.h"

namespace corvanet::cli {

struct CommandContext {
  Session& session;
  std::ostream& out;
  std::ostream& err;
};

using CommandArgs = std::span<const std::string>;
using CommandFunction = int (*)(CommandContext&, CommandArgs);

struct CommandDef {
  std::string_view name;
  std::string_view usage;  // the arguments, for the usage text
  CommandFunction run;
};

std::span<const CommandDef> Commands();
const CommandDef* FindCommand(std::string_view name);
void PrintUsage(std::ostream& err);

// Prints a usage error for one command and returns kExitUsage.
int UsageError(CommandContext& context, std::string_view command, std::string_view problem);

// The commands.
int SettingsCommand(CommandContext& context, CommandArgs args);
int RunCommand(CommandContext& context, CommandArgs args);
// The single-statistic files of list N now; exit status 3 when a datafile failed.
int StatsCommand(CommandContext& context, CommandArgs args);
int RefreshMasterfileCommand(CommandContext& context, CommandArgs args);
int ListCommand(CommandContext& context, CommandArgs args);
int ClearDatafilesCommand(CommandContext& context, CommandArgs args);
// The unattended run of RunListNum; exit status 3 when a datafile failed.
int RunAutomated(CommandContext& context);
// No command: the installation's summary.
void PrintInstallationSummary(CommandContext& context);

}  // namespace corvanet::cli
