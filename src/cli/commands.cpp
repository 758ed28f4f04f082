#include "cli/commands.h"

namespace corvanet::cli {

namespace {
const CommandDef kCommands[] = {
    {"clear-datafiles", "", &ClearDatafilesCommand},
    {"list",
     "N [add TEXT | move-all | clear | remove TEXT | vendor eSignal|Reuters|Yahoo|Other | "
     "periods D,W,M,Q]...",
     &ListCommand},
    {"refresh-masterfile", "", &RefreshMasterfileCommand},
    {"run", "N", &RunCommand},
    {"settings", "[KEY=VALUE ...]", &SettingsCommand},
    {"stats", "N", &StatsCommand},
};
}  // namespace

std::span<const CommandDef> Commands() {
  return kCommands;
}

const CommandDef* FindCommand(std::string_view name) {
  for (const CommandDef& command : kCommands) {
    if (command.name == name) return &command;
  }
  return nullptr;
}

void PrintUsage(std::ostream& err) {
  err << "usage: corvanet-cli [--base-dir DIR] [--log] [--yes] [COMMAND ARGS...]\n"
         "commands:\n";
  for (const CommandDef& command : kCommands) {
    err << "  " << command.name << ' ' << command.usage << '\n';
  }
}

int UsageError(CommandContext& context, std::string_view command, std::string_view problem) {
  context.err << "corvanet-cli " << command << ": " << problem << '\n';
  PrintUsage(context.err);
  return kExitUsage;
}

}  // namespace corvanet::cli
