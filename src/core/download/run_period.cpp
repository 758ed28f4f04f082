#include "core/download/run_period.h"

#include <string>

#include "core/download/retrieve.h"
#include "core/download/single_file_update.h"
#include "core/lists/download_lists.h"
#include "core/lists/symbols.h"
#include "core/platform/field_reader.h"
#include "core/state/log.h"

namespace corvanet {

namespace {

// The datafiles a period's walk of the list would take.
int CountPeriodDatafiles(const Session& session, FieldReader& list) {
  const bool quarterly = session.run.DataPeriod == "Quarterly";
  int count = 0;
  std::string name;
  std::string symbol;
  while (!list.AtEnd() && list.ReadRecord(name, symbol)) {
    if (!(quarterly && IsSkippedInQuarterly(symbol))) ++count;
  }
  return count;
}

}  // namespace

std::string UpdateFileName(std::string_view period) {
  return "Update-" + std::string(period) + ".csv";
}

bool LoadUpdateFile(Session& session, UpdateFileIndex& update_rows, std::string& cause) {
  const std::string update_name = UpdateFileName(session.run.DataPeriod);
  update_rows.Load(BaseFolder(session) + update_name);
  if (update_rows.garbled_lines() > 0) {
    Log(session, "DownLoadButton_Click - " + update_name + " holds " +
                     std::to_string(update_rows.garbled_lines()) +
                     " garbled line(s), the first at line " +
                     std::to_string(update_rows.first_garbled_line()) + "; left out");
  }
  if (update_rows.row_commas() != std::string::npos) return true;
  cause = update_name + " holds no update rows (an error page, or no file at all?)";
  return false;
}

void RunPeriod(Session& session, int run_total, RunSummary& summary, UpdateFileIndex& update_rows) {
  ProgressBar& bar = session.ui.ProgressBar1;
  bar.minimum = 0;
  bar.maximum = run_total;
  bar.visible = true;
  bar.value = 0;
  FieldReader list;
  if (!OpenDownloadList(session, list)) {
    summary.period_problems.push_back("the list of " + session.run.DataPeriod +
                                      " datafiles could not be opened");
    return;
  }
  const std::string update_name = UpdateFileName(session.run.DataPeriod);
  const FetchResult fetched = RetrieveDataFile(session, update_name, update_name);
  update_rows.Clear();
  std::string cause;
  if (!fetched.ok()) {
    // Merging the previous update file again would add nothing new, and every other fetch of the
    // period would meet the same refusal: the period's datafiles are not updated, and the cause is
    // named once instead of blamed on each of them.
    cause = update_name + " could not be fetched: " + fetched.Describe();
  } else {
    LoadUpdateFile(session, update_rows, cause);
  }
  if (!cause.empty()) {
    const int skipped = CountPeriodDatafiles(session, list);
    summary.not_updated += skipped;
    // The walk passes them by: the count of datafiles done moves on as if it had taken them.
    session.run.DatafileCounter =
        static_cast<std::int16_t>(std::min(INT16_MAX, session.run.DatafileCounter + skipped));
    summary.period_problems.push_back(session.run.DataPeriod + ": " + cause + "; " +
                                      std::to_string(skipped) + " datafile(s) not updated");
    Log(session, "DownLoadButton_Click - " + summary.period_problems.back());
    if (!fetched.ok() && fetched.transient()) {
      summary.transient_update_files.push_back(
          {session.run.DataPeriod, skipped, summary.period_problems.back()});
    }
    return;
  }
  int records = 0;
  SingleFileUpdate(session, list, run_total, records, update_rows, summary);
}

}  // namespace corvanet
