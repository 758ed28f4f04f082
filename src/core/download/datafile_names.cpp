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

namespace {

std::string DestinationPathOf(const WindowState& ui, std::string_view period,
                              const std::string& destination_name) {
  if (ui.VendorOther) return ui.PathToDataFiles + destination_name;
  return ui.PathToDataFiles + Folder(period) + destination_name;
}

}  // namespace

std::string DestinationPath(const Session& session) {
  return DestinationPathOf(session.ui, session.run.DataPeriod, session.run.DestinationFileName);
}

std::string DestinationPathAhead(const Session& session, std::string_view period,
                                 std::string_view listed_symbol) {
  return DestinationPathAhead(session.ui, period, listed_symbol);
}

std::string DestinationPathAhead(const WindowState& ui, std::string_view period,
                                 std::string_view listed_symbol) {
  if (ui.VendorOther) {
    return DestinationPathOf(
        ui, period, ServiceForm(listed_symbol) + std::string(period) + "-CompositeStats.csv");
  }
  std::string symbol(listed_symbol);
  if (ui.VendorReuters) symbol = ReutersForm(symbol);
  if (ui.VendorYahoo) symbol = YahooForm(symbol);
  return DestinationPathOf(ui, period, symbol + ".csv");
}

std::string ReplacedDatafilePath(const Session& session) {
  return session.ui.PathToDataFiles + Folder("Base") + Folder("Replaced") +
         Folder(session.run.DataPeriod) + session.run.DestinationFileName;
}

}  // namespace corvanet
