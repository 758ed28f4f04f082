#include "core/app/run_outcome.h"

#include "core/app/download_run.h"
#include "core/app/startup.h"
#include "core/lists/download_lists.h"
#include "core/state/log.h"

namespace corvanet {

namespace {

std::string Heading(const RunSummary& summary, const std::string& list) {
  if (!summary.started) return "FAILED: the download of " + list + " did not start.";
  if (summary.stopped) {
    return "STOPPED: the download of " + list + " was stopped before every datafile was updated.";
  }
  if (!summary.failures.empty() || !summary.period_problems.empty() ||
      !summary.rejected_rows.empty()) {
    return "FAILED: not every datafile of " + list + " could be updated. Why is listed below.";
  }
  if (summary.has_failures()) {
    return "FAILED: the datafiles of " + list +
           " were updated, but not every statistic or price file could be made.";
  }
  return "Complete: every datafile of " + list + " was updated.";
}

}  // namespace

void ShowRunOutcome(Session& session, const RunSummary& summary) {
  WindowState& ui = session.ui;
  ui.RunOutcome.caption = Heading(summary, DownLoadType(session));
  ui.RunSummaryLines = summary.Lines();
  ui.RunFailed = !summary.started || summary.has_failures();
}

RunSummary DownloadAndShowOutcome(Session& session) {
  RunSummary summary = DownLoadButton_Click(session);
  ShowRunOutcome(session, summary);
  return summary;
}

RunSummary AutomatedRunAndShowOutcome(Session& session) {
  // No one is there to answer a box, and a box left open would keep a scheduled run from ever
  // ending: what the run says goes to the log and under its result instead.
  std::vector<std::string> unshown;
  session.shell.DivertMessages([&](std::string_view text, std::string_view title) {
    // One line: the box's line breaks and the blanks around them become one blank.
    std::string line = std::string(title) + ": ";
    for (const char c : text) {
      const bool blank = c == '\r' || c == '\n' || c == ' ';
      if (!blank) {
        line += c;
      } else if (line.back() != ' ') {
        line += ' ';
      }
    }
    if (line.back() == ' ') line.pop_back();
    Log(session, "AutomatedRuns - not shown in a message box: " + line);
    unshown.push_back("Message: " + line);
  });
  RunSummary summary = AutomatedRuns(session);
  session.shell.DivertMessages(nullptr);
  // A list number outside 1-7 selects nothing and runs nothing; there is no run to show.
  if (CurrentListNumber(session) != 0) {
    ShowRunOutcome(session, summary);
    session.ui.RunSummaryLines.insert(session.ui.RunSummaryLines.end(), unshown.begin(),
                                      unshown.end());
  }
  return summary;
}

}  // namespace corvanet
