#include "core/download/run_period.h"

#include <algorithm>
#include <string>
#include <utility>

#include "core/download/retrieve.h"
#include "core/download/retry_rounds.h"
#include "core/download/single_file_update.h"
#include "core/lists/download_lists.h"
#include "core/lists/symbols.h"
#include "core/platform/field_reader.h"
#include "core/platform/files.h"
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

// The walk of a period whose update file could not be had (`cause`): the datafiles are merged
// with the update file an earlier run kept in Base/, or, without one, taken from their base
// copies; a missing base copy is fetched whole as on any walk.
void WalkWithKeptUpdateFile(Session& session, FieldReader& list, int run_total, RunSummary& summary,
                            UpdateFileIndex& update_rows, const std::string& cause) {
  std::string none;
  const bool kept = LoadUpdateFile(session, update_rows, none);
  update_rows.set_kept(true);
  summary.period_problems.push_back(
      session.run.DataPeriod + ": " + cause +
      (kept ? "; merged with the update file kept from an earlier run"
            : "; no update file kept from an earlier run either: datafiles taken from their base "
              "copies"));
  Log(session, "DownLoadButton_Click - " + summary.period_problems.back());
  int records = 0;
  SingleFileUpdate(session, list, run_total, records, update_rows, summary);
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
  // The update file of an earlier run stays in reach while the new one is fetched: a body that
  // holds no update rows (an empty answer, an error page sent as 200) must not take its place.
  const std::string update_path = BaseFolder(session) + update_name;
  const std::string kept_path = update_path + ".kept";
  const bool kept = FileExists(update_path) && CopyFileReplacing(update_path, kept_path);
  const FetchResult fetched = RetrieveDataFile(session, update_name, update_name);
  update_rows.Clear();
  std::string cause;
  if (!fetched.ok()) {
    cause = update_name + " could not be fetched: " + fetched.Describe();
  } else {
    LoadUpdateFile(session, update_rows, cause);
  }
  if (kept) {
    if (!cause.empty() && fetched.ok()) CopyFileReplacing(kept_path, update_path);
    RemoveFile(kept_path);
  }
  if (cause.empty()) {
    int records = 0;
    SingleFileUpdate(session, list, run_total, records, update_rows, summary);
    return;
  }
  if (fetched.ok() || !fetched.transient() || !session.run.service_unusable.empty() ||
      RetryRoundsWanted(session.ui) == 0) {
    WalkWithKeptUpdateFile(session, list, run_total, summary, update_rows, cause);
    return;
  }
  // A failure that may pass: the period waits for the retries after the walk (every other fetch of
  // the period would likely meet the same failure meanwhile), and is merged with the kept update
  // file only when they do not bring the file in.
  const int skipped = CountPeriodDatafiles(session, list);
  summary.not_updated += skipped;
  // The walk passes them by: the count of datafiles done moves on as if it had taken them.
  session.run.DatafileCounter =
      static_cast<std::int16_t>(std::min(INT16_MAX, session.run.DatafileCounter + skipped));
  summary.period_problems.push_back(session.run.DataPeriod + ": " + cause + "; " +
                                    std::to_string(skipped) + " datafile(s) not updated");
  Log(session, "DownLoadButton_Click - " + summary.period_problems.back());
  summary.transient_update_files.push_back(
      {session.run.DataPeriod, skipped, summary.period_problems.back(), cause});
}

void MergeWithKeptUpdateFiles(Session& session, int run_total, RunSummary& summary) {
  for (UnfetchedUpdateFile& file : std::exchange(summary.transient_update_files, {})) {
    if (StopRequested(session)) {
      summary.stopped = true;
      break;
    }
    summary.not_updated -= file.not_updated;
    std::erase(summary.period_problems, file.problem);
    session.run.DataPeriod = file.period;
    session.run.DatafileCounter =
        static_cast<std::int16_t>(std::max(0, session.run.DatafileCounter - file.not_updated));
    FieldReader list;
    if (!OpenDownloadList(session, list)) {
      summary.period_problems.push_back("the list of " + file.period +
                                        " datafiles could not be opened");
      continue;
    }
    UpdateFileIndex update_rows;
    WalkWithKeptUpdateFile(session, list, run_total, summary, update_rows, file.cause);
  }
}

}  // namespace corvanet
