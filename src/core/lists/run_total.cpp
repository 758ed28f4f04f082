#include "core/lists/run_total.h"

#include <cstdint>
#include <string>

#include "core/lists/download_lists.h"
#include "core/lists/masterfile.h"
#include "core/lists/symbols.h"
#include "core/platform/field_reader.h"
#include "core/state/log.h"

namespace corvanet {

int CountRunDatafiles(Session& session) {
  LogEntry(session, "CountRunDatafiles");
  const WindowState& ui = session.ui;
  const int n = CurrentListNumber(session);
  if (n < 1 || n > 7) return 0;
  const std::int64_t periods = (ui.DailyInterval != 0) + (ui.WeeklyInterval != 0) +
                               (ui.MonthlyInterval != 0) + (ui.QuarterlyInterval != 0);
  const bool quarterly = ui.QuarterlyInterval != 0;

  // The run reads the source with the same two-field records, so the count walks it the same way;
  // a user list's header lines are counted as records here and taken off below.
  const bool user_list = n <= 5;
  const std::string path = user_list ? DownloadListPath(session, n) : MasterFilePath(session);
  FieldReader reader;
  if (!reader.Open(path)) {
    Log(session, "CountRunDatafiles - cannot read " + path);
    return 0;
  }
  std::int64_t records = 0;
  std::int64_t skipped = 0;
  std::string name;
  std::string symbol;
  while (!reader.AtEnd()) {
    if (!reader.ReadRecord(name, symbol)) {
      Log(session, "CountRunDatafiles - the last record of " + path + " has no symbol");
      break;
    }
    ++records;
    if (quarterly && IsSkippedInQuarterly(symbol)) ++skipped;
  }
  if (user_list) records -= 5;
  const std::int64_t total = records * periods - skipped;
  if (total < 0) {
    Log(session, "CountRunDatafiles - " + path + " holds fewer records than its header; 0 counted");
    return 0;
  }
  if (total > INT16_MAX) {
    Log(session, "CountRunDatafiles - " + std::to_string(total) + " datafiles exceed " +
                     std::to_string(INT16_MAX) + "; the total is held there");
    return INT16_MAX;
  }
  return static_cast<int>(total);
}

}  // namespace corvanet
