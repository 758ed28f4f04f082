// refresh-masterfile: fetch, validate and install the master file, then check the lists.
#include "cli/commands.h"
#include "core/download/refresh_masterfile.h"
#include "core/lists/masterfile.h"

namespace corvanet::cli {

int RefreshMasterfileCommand(CommandContext& context, const CommandLine& /*line*/) {
  const bool installed = RefreshMasterfile(context.session);
  LoadMasterfile(context.session);
  if (!installed) {
    context.out << "The master file could not be refreshed; the old one is kept"
                << (context.session.logging() ? " (see the log)" : " (--log tells why)") << ".\n";
    return kExitRunFailures;
  }
  context.out << "Master file " << MasterFilePath(context.session) << ": "
              << context.session.ui.List5.size() << " issues\n";
  return kExitOk;
}

}  // namespace corvanet::cli
