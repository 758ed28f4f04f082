#include "core/download/datafile_names.h"

#include "core/lists/symbols.h"
#include "core/platform/paths.h"
#include "core/state/log.h"

namespace corvanet {

std::string_view TickedPeriod(const WindowState& ui, int period_number) {
  const int boxes[] = {ui.DailyInterval, ui.WeeklyInterval, ui.MonthlyInterval,
                       ui.QuarterlyInterval};
  const bool known = period_number >= 1 && period_number <= 4;
  return known && boxes[period_number - 1] != 0 ? kPeriodNames[period_number - 1] : "";
}

void DetermineInterval(Session& session, int period_number) {
  // Written on entry, so the line carries the period set by the previous call.
  WriteLog(session, "DetermineInterval");
  session.run.DataPeriod = TickedPeriod(session.ui, period_number);
}

bool SetDatafileNames(Session& session) {
  WriteLog(session, "SetDatafileNames");
  RunState& run = session.run;
  run.RemoteFileName = run.WebSymbol + run.DataPeriod + "-CompositeStats.csv";
  run.RemoteUpdateFileName = run.WebSymbol + run.DataPeriod + "-Update.csv";
  run.BaseFileName = run.RemoteFileName;
  if (session.ui.VendorOther) {
    run.DestinationFileName = run.RemoteFileName;
    run.DestinationUpdateFileName = run.RemoteUpdateFileName;
  } else {
    if (session.ui.VendorReuters) ReutersSymbolCorrection(session);
    if (session.ui.VendorYahoo) YahooSymbolCorrection(session);
    run.DestinationFileName = run.DownloadSymbol + ".csv";
    run.DestinationUpdateFileName = run.DownloadSymbol + "-Update.csv";
  }
  if (IsSafeFileNamePart(run.WebSymbol) && IsSafeFileNamePart(run.DestinationFileName)) return true;
  WriteLog(session, "SetDatafileNames - symbol " + run.DownloadSymbol +
                        " cannot be used in a file name; skipped");
  return false;
}

std::string DestinationPath(const Session& session) {
  const RunState& run = session.run;
  if (session.ui.VendorOther) return session.ui.PathToDataFiles + run.DestinationFileName;
  return session.ui.PathToDataFiles + Folder(run.DataPeriod) + run.DestinationFileName;
}

}  // namespace corvanet
