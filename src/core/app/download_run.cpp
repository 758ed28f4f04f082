#include "core/app/download_run.h"

#include <algorithm>
#include <optional>
#include <string>

#include "core/app/run_folders.h"
#include "core/app/run_outcome.h"
#include "core/app/settings.h"
#include "core/app/settings_buttons.h"
#include "core/download/datafile_names.h"
#include "core/download/early_fetches.h"
#include "core/download/merge_index.h"
#include "core/download/refresh_masterfile.h"
#include "core/download/retrieve.h"
#include "core/download/retry_rounds.h"
#include "core/download/run_period.h"
#include "core/download/single_file_update.h"
#include "core/download/system_messages.h"
#include "core/download/update_file_index.h"
#include "core/lists/download_lists.h"
#include "core/lists/masterfile.h"
#include "core/lists/run_total.h"
#include "core/lists/symbols.h"
#include "core/platform/files.h"
#include "core/platform/paths.h"
#include "core/platform/run_lock.h"
#include "core/pricefiles/conversion.h"
#include "core/pricefiles/price_files.h"
#include "core/state/log.h"
#include "core/stats/single_stat_files.h"
#include "core/ui/tabs.h"

namespace corvanet {

namespace {

// A full list walks the master file. A new installation whose first fetch of it failed (start-up
// tries without a word) gets one more try here, so that the run can say why it has nothing to
// walk; a certificate that is not trusted stops the run as at any other fetch.
bool MasterfileInHand(Session& session, int list, RunSummary& summary) {
  if (!IsFullList(list) || FileExists(MasterFilePath(session))) return true;
  FetchResult answer;
  if (RefreshMasterfile(session, nullptr, &answer) == MasterfileRefresh::kInstalled) {
    LoadMasterfile(session);
    return true;
  }
  if (session.run.service_unusable.empty()) {
    summary.period_problems.push_back(
        "the master file " + session.app.MasterFileName + " could not be fetched: " +
        (answer.ok() ? std::string("the service sent no list of indexes and ETFs")
                     : answer.Describe()));
  }
  return false;
}

// The checks before a run; false when the run must not start.
bool RunMayStart(Session& session) {
  WindowState& ui = session.ui;
  if (ui.UserName.empty() || ui.Password.empty()) {
    SetTabs(session);
    return false;
  }
  if (ui.UserName == "Enter username here" || ui.Password == "Enter password here") {
    session.shell.MessageBox(
        "Please enter your Tessaly username and password\runder the 'General Settings' tab.",
        kDefaultTitle, Buttons::kOk, Icon::kNone);
    SetTabs(session);
    return false;
  }
  SaveToINI_Click(session);
  if (CurrentListNumber(session) == 0) {
    session.shell.Notify("Please load a download list!");
    return false;
  }
  if (ChosenVendor(ui) == nullptr) {
    // A list file that is gone sets no vendor: that is what the user must hear of.
    const std::string list_file = DownloadListPath(session, CurrentListNumber(session));
    if (!FileExists(list_file)) {
      session.shell.Notify("The file of " + DownLoadType(session) + ", " + list_file +
                           ", is missing.\rChoose its data vendor, periods and issues, and save "
                           "it again.");
      return false;
    }
    session.shell.Notify("Please select a Data Vendor!");
    return false;
  }
  if (!AnyPeriodTicked(ui)) {
    session.shell.Notify("Please select at least one data period and start download again.");
    return false;
  }
  return true;
}

// The converter batches of the run. A full list empties its MetaStock period folders first, so
// securities gone from the master file go from them too; that happens only when every datafile of
// the list was updated and so every security is converted again: after a failed run the folders
// keep what they had, and the converter replaces each security it gets in place. A converter that
// cannot run empties nothing and runs no batch.
void ConvertPriceFiles(Session& session, int list, const ConversionLedger& ledger,
                       RunSummary& summary) {
  if (session.ui.MakeMetaStockPxFiles == 0) return;
  const bool converts = ConvertsToMetaStock(session.ui) &&
                        std::any_of(PriceFileKinds().begin(), PriceFileKinds().end(),
                                    [&](const PriceFileKind& k) { return session.ui.*k.ticked; });
  if (converts) {
    summary.converter_problem = CheckConverter(session);
    if (!summary.converter_problem.empty()) return;
  }
  if (converts && list >= 6) {
    if (summary.failures.empty() && summary.period_problems.empty()) {
      ClearMetaStockFolders(session, list);
    } else {
      Log(session,
          "DownLoadButton_Click - MetaStock folders not emptied: not every datafile of "
          "the list was updated");
    }
  }
  summary.conversions = RunConverterBatches(session, ledger);
}

// Temporary files of a run that was killed are never datafiles: sweep them before writing anew,
// and make again the folders a user deleted by hand.
void PrepareFolders(Session& session, RunSummary& summary) {
  const int removed = SweepTemporaryFiles(session);
  if (removed > 0) {
    Log(session, "DownLoadButton_Click - removed " + std::to_string(removed) +
                     " temporary file(s) left by an interrupted run");
  }
  for (std::string& problem : MakeRunFolders(session)) {
    Log(session, "DownLoadButton_Click - " + problem);
    summary.period_problems.push_back(std::move(problem));
  }
}

// Said once per run, in its summary, its log and the window's status line, when the password
// would cross a network in clear. A service on this computer is exempt: nothing leaves it.
void WarnOfPlainHttp(Session& session, RunSummary& summary) {
  const std::optional<ServiceAddress> address = ParseServiceAddress(session.app.DataSetURL);
  if (!address || !address->exposes_password()) return;
  const std::string warning =
      "the password is sent unencrypted; use https:// if the service offers it";
  Log(session, "DownLoadButton_Click - " + warning);
  session.ui.StatusText = warning;
  summary.warnings.push_back(warning);
}

// While it lives, the walk writes the price files of each datafile it brings up to date, when the
// price files are ticked, and keeps the ledger of what it handed to the converter.
class PriceFilesOfTheWalk {
 public:
  explicit PriceFilesOfTheWalk(Session& session) : session_(session) {
    if (session_.ui.MakeMetaStockPxFiles != 0) {
      session_.after_datafile_updated = &CreateMetaStockPxFiles;
      session_.conversion_ledger = &ledger_;
    }
  }
  ~PriceFilesOfTheWalk() {
    session_.after_datafile_updated = nullptr;
    session_.conversion_ledger = nullptr;
  }
  PriceFilesOfTheWalk(const PriceFilesOfTheWalk&) = delete;
  PriceFilesOfTheWalk& operator=(const PriceFilesOfTheWalk&) = delete;

  const ConversionLedger& ledger() const { return ledger_; }

 private:
  Session& session_;
  ConversionLedger ledger_;
};

// Names what failed, so a run that looks complete in the window says so too.
std::string ProblemsText(const RunSummary& summary) {
  if (!summary.has_failures()) return {};
  std::string text;
  const std::size_t failed =
      summary.failures.size() + static_cast<std::size_t>(summary.not_updated);
  if (failed > 0) text = std::to_string(failed) + " datafile(s) could not be updated";
  for (std::size_t i = 0; i < summary.failures.size() && i < 5; ++i) {
    text += (i == 0 ? ": " : ", ") + summary.failures[i].symbol + " " + summary.failures[i].period;
  }
  if (summary.failures.size() > 5) text += ", ...";
  const auto add = [&text](const std::string& part) { text += (text.empty() ? "" : "; ") + part; };
  if (!summary.rejected_rows.empty()) {
    add(std::to_string(summary.rejected_rows.size()) + " row(s) of the service left out");
  }
  for (const std::string& problem : summary.period_problems) add(problem);
  if (summary.stopped) add("the run was stopped");
  if (!summary.service_unusable.empty()) add(summary.service_unusable + "; run stopped");
  if (!summary.price_file_failures.empty()) {
    add(std::to_string(summary.price_file_failures.size()) + " price file(s) could not be written");
  }
  if (!summary.converter_problem.empty()) {
    add("MetaStock conversion not run: " + summary.converter_problem);
  }
  for (const ConversionOutcome& batch : summary.conversions) {
    if (batch.failed > 0 || !batch.problem.empty()) {
      add(batch.batch_file + ": " +
          (batch.problem.empty() ? std::to_string(batch.failed) + " price file(s) not converted"
                                 : batch.problem));
    }
  }
  return text;
}

// What went wrong, counted as the user would: each datafile not updated, each statistic or price
// file not made; a run whose only trouble was a whole period's fetch counts that.
int FailureCount(const RunSummary& summary) {
  std::size_t count = summary.failures.size() + summary.statistic_failures.size() +
                      static_cast<std::size_t>(std::max(0, summary.not_updated));
  for (const ConversionOutcome& batch : summary.conversions) {
    count += batch.failed > 0 ? static_cast<std::size_t>(batch.failed) : !batch.problem.empty();
  }
  if (count == 0) count = std::max<std::size_t>(1, summary.period_problems.size());
  return static_cast<int>(count);
}

// A run that did not update everything never says "complete".
RunEnding EndingOf(const RunSummary& summary) {
  if (summary.stopped || !summary.service_unusable.empty()) return {"stopped", false};
  if (!summary.has_failures()) return {};
  return {"finished with " + std::to_string(FailureCount(summary)) + " failure(s)", false};
}

void ShowCompletion(Session& session, int list, const RunSummary& summary) {
  WindowState& ui = session.ui;
  const std::string type = DownLoadType(session);
  const std::string& elapsed = summary.elapsed;
  ui.Label13.caption = "Update progress is displayed here";
  ui.RunProblems.caption = ProblemsText(summary);
  ui.RunProblems.visible = summary.has_failures();
  ui.ButtonBarFrame.caption = "Select a Download List";
  const std::string verb = list <= 5 ? "Update" : "Download";
  std::string ended = "Complete";
  if (summary.stopped || !summary.service_unusable.empty()) {
    ended = "Stopped";
  } else if (summary.has_failures()) {
    ended = "Finished With " + std::to_string(FailureCount(summary)) + " Failure(s)";
  }
  ui.DownLoadButton.caption = verb + " " + type + " " + ended + (ended == "Complete" ? "!" : "") +
                              " ... (Elapsed time:  " + elapsed + ")";
  ui.DownloadProgressFrame.caption =
      verb + " " + (summary.has_failures() ? "Not Complete" : "Complete") + " For List " + type;
  ui.DownLoadButton.bold = true;
  // The panel tells the run's end before any message box does.
  ShowRunOutcome(session, summary);
  session.NotifyObserver();
}

}  // namespace

RunSummary DownLoadButton_Click(Session& session) {
  if (session.logging()) {
    WriteLog(session, "");
    WriteLog(session, "DownLoadButton_Click");
  }
  RunSummary summary;
  // The result panel only ever shows the run in hand.
  ClearRunOutcome(session.ui);
  session.NotifyObserver();
  // One run at a time per installation: two would sweep and replace each other's files.
  RunLock lock;
  if (!lock.Acquire(session.app.ProgramDirectory, FormatTimeOfDay(session.clock.Now()))) {
    summary.busy = lock.holder();
    Log(session, "DownLoadButton_Click - " + summary.busy);
    session.shell.MessageBox(summary.busy, kDefaultTitle, Buttons::kOk, Icon::kExclamation);
    return summary;
  }
  if (!RunMayStart(session)) return summary;
  summary.started = true;
  WindowState& ui = session.ui;
  RunState& run = session.run;
  const int list = CurrentListNumber(session);

  ui.DownLoadButton.bold = true;
  ui.RunProblems = {"", false};
  MakeListFolder(session);  // a lists folder deleted by hand, so the list can be saved
  SaveDownloadList_Click(session);
  run.RunStartTimer = session.clock.Timer();
  run.RunStartTime = session.clock.Now();
  const std::string started = " ... (Started at " + FormatClockAmPm(run.RunStartTime) + ")";
  const bool forced = (list == 6 && ui.AllDailyForceFull) || (list == 7 && ui.AllPeriodsForceFull);
  if (forced) {
    ui.ForceFullDownload = 1;
    ui.DownLoadButton.caption = "Forcing a full download of " + DownLoadType(session) + started;
  } else {
    ui.DownLoadButton.caption = "Updating " + DownLoadType(session) + started;
  }
  session.NotifyObserver();
  if (ui.MakeMetaStockPxFiles != 0) StartConverterBatches(session);
  SelectMasterfile(session);
  WarnOfPlainHttp(session, summary);
  run.DatafileCounter = 0;
  run.time_outs_in_a_row = 0;
  run.service_unusable.clear();
  run.retry_after_seconds = 0;
  const bool walkable = MasterfileInHand(session, list, summary);
  const int run_total = CountRunDatafiles(session);
  PrepareFolders(session, summary);

  PriceFilesOfTheWalk price_files(session);
  MergeIndex merge_index(session);
  // A start that runs a list keeps its early fetches from start-up on (the update files may already
  // be under way); a click has its own.
  std::optional<EarlyFetches> own_early_fetches;
  EarlyFetches& early_fetches = session.early_fetches != nullptr
                                    ? *session.early_fetches
                                    : own_early_fetches.emplace(session);
  UpdateFileIndex update_rows;
  for (int period = 1; period <= 4; ++period) {
    const std::string_view ticked = TickedPeriod(ui, period);
    if (!ticked.empty()) early_fetches.Start(UpdateFileName(ticked));
  }
  // The closing steps' files too: a run that only merges walks its periods in less than a round
  // trip. The run never starts with the log-in placeholders, so the master file is always fetched.
  early_fetches.Start(SystemMessageFileName(session));
  early_fetches.Start(session.app.MasterFileName);
  for (int period = 1; walkable && period <= 4; ++period) {
    DetermineInterval(session, period);
    if (run.DataPeriod.empty()) continue;
    RunPeriod(session, run_total, summary, update_rows);
    summary.service_unusable = run.service_unusable;
    if (summary.stopped) break;
  }
  // Stopped between datafiles, by the user or by a service that cannot be used: what was written
  // stays, and nothing more is started. Such a service is asked nothing more, but the walks go on
  // with what is on disk, and so many datafiles as needed a request were not tried.
  if (summary.stopped) {
    summary.not_tried = std::max(0, run_total - run.DatafileCounter);
  } else {
    if (summary.service_unusable.empty()) RetryTransientFailures(session, summary);
    MergeWithKeptUpdateFiles(session, run_total, summary);
    summary.service_unusable = run.service_unusable;
    if (!summary.service_unusable.empty()) {
      Log(session, "DownLoadButton_Click - " + summary.service_unusable + "; run stopped");
    }
  }
  const bool cut_short = summary.stopped || !summary.service_unusable.empty();
  bool message_fetched = false;
  summary.price_file_failures = price_files.ledger().failures;
  if (!merge_index.Save()) {
    Log(session, "DownLoadButton_Click - " + std::string(MergeIndex::kFileName) +
                     " could not be written; the next run reads every datafile whole");
  }
  if (!cut_short) {
    if (ui.AutoCreateOneStatFiles != 0) {
      StatFilesSummary statistics;
      MakeSingleStatFiles(session, &statistics);
      summary.statistic_failures = std::move(statistics.failures);
    }
    // A failed fetch keeps the old copy on disk, but an old message is not shown again as new.
    const std::string message_file = GetSystemMessageFileName(session);
    message_fetched = RetrieveDataFile(session, message_file, message_file).ok();
    std::string held_back;
    if (RefreshMasterfile(session, &held_back) == MasterfileRefresh::kHeldBack) {
      summary.notes.push_back(std::move(held_back));
    }
    ConvertPriceFiles(session, list, price_files.ledger(), summary);
  }

  summary.elapsed = ElapsedText(session.clock.Timer() - run.RunStartTimer);
  ShowCompletion(session, list, summary);
  // A run cut short fetched no message file; it still says that it stopped.
  RetrieveSystemMessages(session, summary.elapsed, message_fetched, EndingOf(summary));
  for (const std::string& line : summary.Lines()) Log(session, "Run summary - " + line);
  Log(session, "DownLoadButton_Click - Complete!");
  ui.ForceFullDownload = 0;
  return summary;
}

}  // namespace corvanet
