// run N, and the unattended start from RunListNum.txt.
#include "cli/commands.h"
#include "core/app/startup.h"
#include "core/platform/text.h"

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

int RunCommand(CommandContext& context, CommandArgs args) {
  int list = 0;
  if (args.size() != 1 || !ParseInteger(args[0], list) || list < 1 || list > 7) {
    return UsageError(context, "run", "expected one list number from 1 to 7");
  }
  context.session.app.RunListNum = list;
  return RunAutomated(context);
}

}  // namespace corvanet::cli
