// stats N: the single-statistic page's list button N (1-5 the user lists, 6 "All Daily", 7 "All
// Periods"), which ticks that list's RunWith box and makes the files now.
#include "cli/commands.h"
#include "core/app/settings_buttons.h"
#include "core/state/log.h"
#include "core/stats/single_stat_files.h"

namespace corvanet::cli {

int StatsCommand(CommandContext& context, const CommandLine& line) {
  StatFilesSummary summary;
  MakeListStatFiles_Click(context.session, line.list, &summary);
  if (!summary.busy.empty()) return kExitBusy;
  std::ostream& out = context.out;
  out << context.session.ui.DownLoadButton.caption << '\n'
      << "Datafiles split: " << summary.datafiles << '\n'
      << "Datafiles failed: " << summary.failures.size() << '\n';
  for (const DatafileFailure& failure : summary.failures) {
    out << "  " << failure.symbol << ' ' << failure.period << ": " << failure.reason << '\n';
  }
  return summary.failures.empty() ? kExitOk : kExitRunFailures;
}

}  // namespace corvanet::cli
