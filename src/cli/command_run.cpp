// run N, and the unattended start from RunListNum.txt.
#include "cli/commands.h"
#include "core/app/startup.h"

namespace corvanet::cli {

namespace {

int PrintRun(CommandContext& context, const RunSummary& summary) {
  // The run has logged these lines itself.
  for (const std::string& line : summary.Lines()) context.out << line << '\n';
  // A run a check refused never started: a scheduler must not read that as success.
  if (!summary.busy.empty()) return kExitBusy;
  if (!summary.started) return kExitRefused;
  return summary.has_failures() ? kExitRunFailures : kExitOk;
}

}  // namespace

int RunAutomated(CommandContext& context) {
  return PrintRun(context, AutomatedRuns(context.session));
}

// Start-up has taken the list number already (StartupOptions::list_to_run).
int RunCommand(CommandContext& context, const CommandLine& /*line*/) {
  return RunAutomated(context);
}

}  // namespace corvanet::cli
