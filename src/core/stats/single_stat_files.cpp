// The pass of the single-statistic files over a download list, and the page's list buttons.
#include "core/stats/single_stat_files.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "core/download/datafile_names.h"
#include "core/lists/download_lists.h"
#include "core/lists/masterfile.h"
#include "core/lists/run_total.h"
#include "core/lists/symbols.h"
#include "core/platform/field_reader.h"
#include "core/platform/paths.h"
#include "core/platform/run_lock.h"
#include "core/platform/text.h"
#include "core/state/log.h"
#include "core/state/writer_pool.h"

namespace corvanet {

namespace {

bool RunWithTicked(const WindowState& ui, int list) {
  const int boxes[] = {ui.RunWithList1, ui.RunWithList2,    ui.RunWithList3,     ui.RunWithList4,
                       ui.RunWithList5, ui.RunWithAllDaily, ui.RunWithAllPeriods};
  return list >= 1 && list <= 7 && boxes[list - 1] != 0;
}

void Failed(StatFilesSummary* summary, const std::string& symbol, const std::string& period,
            std::string reason) {
  if (summary != nullptr) summary->failures.push_back({symbol, period, std::move(reason)});
}

// One datafile's statistic files as a task of the writer pool; its outcome is logged and counted
// in list order.
class StatFilesTask final : public WriterTask {
 public:
  StatFilesTask(StatFilesJob job, std::string symbol, StatFilesSummary* summary)
      : job_(std::move(job)), symbol_(std::move(symbol)), summary_(summary) {
    files = job_.files;
  }
  void Write() override { ok_ = WriteStatFiles(job_, error_); }
  void Finish(Session& session) override {
    if (ok_) {
      if (summary_ != nullptr) ++summary_->datafiles;
      return;
    }
    Log(session, ErrorTrapLine("MakeIndividualStatFile", error_, job_.datafile_name, job_.period));
    Failed(summary_, symbol_, job_.period, error_.Text());
  }

 private:
  StatFilesJob job_;
  std::string symbol_;
  StatFilesSummary* summary_;
  bool ok_ = false;
  DatafileError error_;
};

// Every entry of the open list for the period in run.DataPeriod.
void MakePeriodStatFiles(Session& session, FieldReader& list, int count, WriterPool& writers,
                         StatFilesSummary* summary) {
  WindowState& ui = session.ui;
  RunState& run = session.run;
  const bool quarterly = run.DataPeriod == "Quarterly";
  const std::string tail =
      " composites of " + std::to_string(count) + " for " + DownLoadType(session);
  int counter = 0;
  std::string name;
  std::string symbol;
  while (!list.AtEnd()) {
    ui.ProgressBar1.value =
        std::clamp(counter + 1, ui.ProgressBar1.minimum, ui.ProgressBar1.maximum);
    ui.DownLoadButton.caption =
        "Making single statistic datafiles for " + std::to_string(counter + 1) + tail;
    Pause(session, 0.05);
    if (!list.ReadRecord(name, symbol)) {
      Log(session, "MakeSingleStatFiles - the list ends with a name without a symbol: " + name);
      break;
    }
    name = TrimCopy(name);
    symbol = TrimCopy(symbol);
    // The service keeps no quarterly files for these composites.
    if (quarterly && IsSkippedInQuarterly(symbol)) continue;
    ++counter;
    run.DownloadName = name;
    run.DownloadSymbol = symbol;
    WebSymbolCorrection(session, symbol);
    if (!SetDatafileNames(session)) {
      Failed(summary, symbol, run.DataPeriod, "symbol cannot be used in a file name");
      continue;
    }
    // The statistic files carry the listed symbol itself in their names.
    if (!IsSafeFileNamePart(symbol)) {
      Log(session,
          "MakeSingleStatFiles - symbol " + symbol + " cannot be used in a file name; skipped");
      Failed(summary, symbol, run.DataPeriod, "symbol cannot be used in a file name");
      continue;
    }
    LogEntry(session, "MakeIndividualStatFile");
    writers.Submit(
        std::make_unique<StatFilesTask>(StatFilesJobOf(session, symbol), symbol, summary));
  }
}

void ShowCompletion(Session& session) {
  WindowState& ui = session.ui;
  const double elapsed = session.clock.Timer() - session.run.RunStartTimer;
  ui.ProgressBar1.visible = false;
  ui.DownLoadButton.caption =
      "Single Statistic Files Created ... (Elapsed time:  " + ElapsedText(elapsed) + ")";
  ui.DownloadProgressFrame.caption = "File creation complete";
  ui.Label13.caption = "Single statistic files created";
  session.NotifyObserver();
}

}  // namespace

void MakeSingleStatFiles(Session& session, StatFilesSummary* summary) {
  LogEntry(session, "MakeSingleStatFiles");
  WindowState& ui = session.ui;
  RunState& run = session.run;
  if (RunWithTicked(ui, CurrentListNumber(session))) {
    SelectMasterfile(session);
    const int count = CountRunDatafiles(session);
    ui.ProgressBar1.minimum = 0;
    ui.ProgressBar1.maximum = count;
    ui.ProgressBar1.value = 0;
    ui.ProgressBar1.visible = true;
    ui.DownloadProgressFrame.caption = "Generating Single Statistic Files";
    ui.Frame2.caption = "Create One Stat Datafiles Started at " + FormatClockAmPm(run.RunStartTime);
    Pause(session, 0.05);
    WriterPool writers(session, WriterPool::ThreadsWanted());
    for (int period = 1; period <= 4; ++period) {
      DetermineInterval(session, period);
      if (run.DataPeriod.empty()) continue;
      if (session.logging()) WriteLog(session, "MakeSingleStatFiles");
      FieldReader list;
      if (!OpenDownloadList(session, list)) {
        Log(session, "MakeSingleStatFiles - the download list could not be opened");
        Failed(summary, "", run.DataPeriod, "the download list could not be opened");
        continue;
      }
      MakePeriodStatFiles(session, list, count, writers, summary);
      list.Close();
    }
    writers.FinishAll();
  }
  ShowCompletion(session);
}

void RunSingleStatFilesNow(Session& session, StatFilesSummary* summary) {
  LogEntry(session, "RunSingleStatFilesNow");
  // A download run replaces the same files: one at a time per installation.
  RunLock lock;
  if (!lock.Acquire(session.app.ProgramDirectory, FormatTimeOfDay(session.clock.Now()))) {
    Log(session, "RunSingleStatFilesNow - " + lock.holder());
    session.shell.MessageBox(lock.holder(), kDefaultTitle, Buttons::kOk, Icon::kExclamation);
    if (summary != nullptr) summary->busy = lock.holder();
    return;
  }
  session.ui.CurrentTab = kDownloadTab;
  Pause(session, 0.05);
  session.run.RunStartTimer = session.clock.Timer();
  session.run.RunStartTime = session.clock.Now();
  LoadDownloadFile_Click(session);
  MakeSingleStatFiles(session, summary);
}

}  // namespace corvanet
