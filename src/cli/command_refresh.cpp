// refresh-masterfile: fetch, validate and install the master file, then check the lists.
#include "cli/commands.h"
#include "core/download/refresh_masterfile.h"
#include "core/lists/masterfile.h"

namespace corvanet::cli {

int RefreshMasterfileCommand(CommandContext& context, const CommandLine& /*line*/) {
  std::string held_back;
  const MasterfileRefresh outcome = RefreshMasterfile(context.session, &held_back);
  LoadMasterfile(context.session);
  if (outcome == MasterfileRefresh::kHeldBack) {
    context.out << held_back << '\n';
    return kExitRunFailures;
  }
  if (outcome != MasterfileRefresh::kInstalled) {
    context.out << "The master file could not be refreshed; the old one is kept"
                << (context.session.logging() ? " (see the log)" : " (--log tells why)") << ".\n";
    return kExitRunFailures;
  }
  context.out << "Master file " << MasterFilePath(context.session) << ": "
              << context.session.ui.List5.size() << " issues\n";
  return kExitOk;
}

}  // namespace corvanet::cli
