// clear-datafiles: delete the datafiles of the data folder and its four period folders.
#include "cli/commands.h"
#include "core/lists/clear_datafiles.h"

namespace corvanet::cli {

int ClearDatafilesCommand(CommandContext& context, const CommandLine& /*line*/) {
  return ClearDataFiles_Click(context.session) ? kExitOk : kExitRefused;
}

}  // namespace corvanet::cli
