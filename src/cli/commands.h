#pragma once
// One function per command, each in its own file, over the started session.
#include <ostream>
#include <string>
#include <string_view>

#include "cli/cli.h"
#include "cli/command_line.h"
#include "core/state/session.h"

namespace corvanet::cli {

struct CommandContext {
  Session& session;
  std::ostream& out;
  std::ostream& err;
  const CliEnvironment& environment;
};

using CommandFunction = int (*)(CommandContext&, const CommandLine&);

// The function of a command named on the command line; nullptr for an unknown name.
CommandFunction FindCommand(std::string_view name);

// Prints a usage error for one command and returns kExitUsage.
int UsageError(CommandContext& context, std::string_view command, std::string_view problem);

// The commands. Each returns an ExitCode.
int SettingsCommand(CommandContext& context, const CommandLine& line);
int RunCommand(CommandContext& context, const CommandLine& line);
int StatsCommand(CommandContext& context, const CommandLine& line);
int RefreshMasterfileCommand(CommandContext& context, const CommandLine& line);
int ListCommand(CommandContext& context, const CommandLine& line);
int ClearDatafilesCommand(CommandContext& context, const CommandLine& line);
int ScheduleCommand(CommandContext& context, const CommandLine& line);
int IndicatorsCommand(CommandContext& context, const CommandLine& line);
// The unattended run of RunListNum.
int RunAutomated(CommandContext& context);
// No command: the installation's summary.
void PrintInstallationSummary(CommandContext& context);

}  // namespace corvanet::cli
