#include "cli/commands.h"

namespace corvanet::cli {

namespace {
struct CommandDef {
  std::string_view name;
  CommandFunction run;
};

const CommandDef kCommands[] = {
    {"clear-datafiles", &ClearDatafilesCommand},
    {"list", &ListCommand},
    {"refresh-masterfile", &RefreshMasterfileCommand},
    {"run", &RunCommand},
    {"settings", &SettingsCommand},
    {"stats", &StatsCommand},
    {"schedule", &ScheduleCommand},
    {"indicators", &IndicatorsCommand},
};
}  // namespace

CommandFunction FindCommand(std::string_view name) {
  for (const CommandDef& command : kCommands) {
    if (command.name == name) return command.run;
  }
  return nullptr;
}

int UsageError(CommandContext& context, std::string_view command, std::string_view problem) {
  context.err << "corvanet-cli " << command << ": " << problem << "\nRun 'corvanet-cli " << command
              << " --help' for more.\n";
  return kExitUsage;
}

}  // namespace corvanet::cli
