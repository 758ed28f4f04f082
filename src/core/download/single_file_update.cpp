#include "core/download/single_file_update.h"

#include <algorithm>
#include <string>

#include "core/download/datafile_names.h"
#include "core/download/fetch_ahead.h"
#include "core/download/retrieve.h"
#include "core/download/update_datafile.h"
#include "core/lists/download_lists.h"
#include "core/lists/symbols.h"
#include "core/platform/files.h"
#include "core/platform/text.h"
#include "core/state/log.h"
#include "core/state/writer_pool.h"

namespace corvanet {

namespace {

void SetProgress(Session& session, int value) {
  ProgressBar& bar = session.ui.ProgressBar1;
  bar.value = std::clamp(value, bar.minimum, bar.maximum);
}

// Whether the datafile named by the run state needs its whole file before it can be merged.
bool NeedsRequest(const Session& session) {
  if (session.ui.ForceFullDownload != 0) return true;
  const auto size = FileSize(BaseFolder(session) + session.run.BaseFileName);
  return !size || *size == 0;
}

// Brings the datafile named by the run state up to date. A forced full download that fails is
// `problem`: the merge still follows on the kept base copy, so the datafile does not fall behind.
DatafileOutcome UpdateOne(Session& session, const UpdateFileIndex& update_rows,
                          std::string& problem) {
  DatafileOutcome outcome;
  if (!update_rows.loaded() && !update_rows.kept()) {
    outcome.reason = "no update file Update-" + session.run.DataPeriod + ".csv";
    return outcome;
  }
  bool fetched_whole = false;
  if (session.ui.ForceFullDownload != 0) {
    const FetchResult fetched =
        RetrieveDataFile(session, session.run.RemoteFileName, session.run.BaseFileName);
    fetched_whole = fetched.ok();
    if (!fetched.ok()) {
      problem =
          "the full download failed: " + fetched.Describe() + " for " + session.run.RemoteFileName;
      const auto kept = FileSize(BaseFolder(session) + session.run.BaseFileName);
      if (!kept || *kept == 0) {
        outcome.reason = problem;
        problem.clear();
        return outcome;
      }
      problem += "; merged on the kept base copy";
    }
  } else {
    const std::int16_t before = session.run.GetFileCount;
    if (!CheckForDataFile(session, outcome.reason)) return outcome;
    fetched_whole = session.run.GetFileCount != before;
  }
  return UpdateDatafile(session, update_rows, fetched_whole);
}

}  // namespace

void SingleFileUpdate(Session& session, FieldReader& list, int run_total, int& record_counter,
                      const UpdateFileIndex& update_rows, RunSummary& summary) {
  LogEntry(session, "SingleFileUpdate");
  RunState& run = session.run;
  WindowState& ui = session.ui;
  ui.Frame2.caption = "Datafile Update Started at " + FormatClockAmPm(run.RunStartTime);
  Pause(session, 0.025);
  const bool quarterly = run.DataPeriod == "Quarterly";
  FetchAhead ahead(session, list, update_rows);
  // Price files are written on other threads while the walk merges the next datafiles.
  WriterPool writers(session,
                     session.after_datafile_updated != nullptr ? WriterPool::ThreadsWanted() : 1);
  std::string name;
  std::string symbol;
  while (!ahead.AtEnd()) {
    // A stop lands between datafiles; those whose files were already arriving are finished and
    // merged rather than thrown away.
    if (StopRequested(session)) {
      summary.stopped = true;
      if (!ahead.NextIsArriving()) break;
    }
    SetProgress(session, run.DatafileCounter + 1);
    Pause(session, 0.0025);
    if (!ahead.ReadRecord(name, symbol)) {
      Log(session, "SingleFileUpdate - the list ends with a name without a symbol: " + name);
      break;
    }
    if (quarterly && IsSkippedInQuarterly(symbol)) continue;
    run.DownloadName = name;
    run.DownloadSymbol = symbol;
    if (session.logging()) WriteLog(session, "Downloading " + symbol + " - " + name);
    run.GetFileCount = 0;
    run.last_fetch_transient = false;
    if (run.DatafileCounter < INT16_MAX) ++run.DatafileCounter;
    WebSymbolCorrection(session, symbol);
    if (!SetDatafileNames(session)) {
      summary.failures.push_back({symbol, run.DataPeriod, "symbol cannot be used in a file name"});
      continue;
    }
    // A service that does not answer is asked nothing more, but what needs no request is merged.
    if (!run.service_unusable.empty() && NeedsRequest(session)) {
      summary.service_unusable = run.service_unusable;
      ++summary.not_tried;
      continue;
    }
    // The datafile in hand, counted among those walked, never past the run's total ("3 of 2").
    const std::string tail = std::to_string(run.DatafileCounter) + " of " +
                             std::to_string(std::max<int>(run_total, run.DatafileCounter)) +
                             " Total Datafiles On List " + DownLoadType(session);
    ui.DownLoadButton.caption =
        run.DataPeriod +
        (ui.ForceFullDownload != 0 ? " Data - Now Downloading Full Datafile "
                                   : " Data - Now Updating Datafile ") +
        tail;
    session.NotifyObserver();
    ++record_counter;
    // A datafile listed twice: its earlier price files are read before it changes again.
    writers.Settle(DestinationPath(session));
    std::string problem;
    const DatafileOutcome outcome = UpdateOne(session, update_rows, problem);
    const std::string which = symbol + " " + run.DataPeriod + ": ";
    if (!problem.empty() && outcome.ok()) {
      Log(session, "SingleFileUpdate - " + which + problem);
      summary.period_problems.push_back(which + problem);
    }
    if (!outcome.note.empty()) summary.notes.push_back(which + outcome.note);
    for (const std::string& row : outcome.rejected_rows) {
      Log(session, "SingleFileUpdate - " + which + row + "; left out");
      summary.rejected_rows.push_back({symbol, run.DataPeriod, row});
    }
    switch (outcome.kind) {
      case DatafileOutcome::Kind::kMerged:
        ++summary.merged;
        break;
      case DatafileOutcome::Kind::kUnchanged:
        ++summary.not_updated;
        break;
      case DatafileOutcome::Kind::kFetchedWhole:
        ++summary.fetched_whole;
        break;
      case DatafileOutcome::Kind::kFailed:
        Log(session,
            "SingleFileUpdate - " + symbol + " " + run.DataPeriod + " failed: " + outcome.reason);
        summary.failures.push_back({symbol, run.DataPeriod, outcome.reason});
        if (run.last_fetch_transient)
          summary.transient_failures.push_back({name, symbol, run.DataPeriod});
        break;
    }
    // A datafile that could not be updated keeps its old price files too.
    if (outcome.written() && session.after_datafile_updated != nullptr) {
      session.after_datafile_updated(session, writers);
    }
  }
}

}  // namespace corvanet
