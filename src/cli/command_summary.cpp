// No command: where everything of the installation lives.
#include "cli/commands.h"
#include "core/app/settings.h"
#include "core/lists/masterfile.h"
#include "core/state/log.h"

namespace corvanet::cli {

void PrintInstallationSummary(CommandContext& context) {
  const Session& session = context.session;
  const AppState& app = session.app;
  const WindowState& ui = session.ui;
  std::ostream& out = context.out;
  out << ui.WindowTitle << " - " << ui.DisplayVersionNum.caption << '\n'
      << "Installation:     " << app.BaseDirectory << '\n'
      << "Program folder:   " << app.ProgramDirectory << '\n'
      << "Settings file:    " << SettingsFilePath(session) << '\n'
      << "Log file:         " << LogFilePath(session) << '\n'
      << "Datafiles:        " << ui.PathToDataFiles << '\n'
      << "Download lists:   " << ui.PathToLists << '\n'
      << "MetaStock files:  " << ui.PathToMSPxFiles << '\n'
      << "Data service:     " << ServiceUrl(app.DataSetURL, "") << '\n'
      << "Master file:      " << MasterFilePath(session) << " (" << ui.List5.size() << " issues)\n"
      << "User name:        " << ui.UserName << '\n';
}

}  // namespace corvanet::cli
