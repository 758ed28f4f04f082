#include "core/download/retry_rounds.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <string>
#include <thread>
#include <tuple>
#include <utility>

#include "core/download/datafile_names.h"
#include "core/download/retrieve.h"
#include "core/download/run_period.h"
#include "core/download/single_file_update.h"
#include "core/platform/field_reader.h"
#include "core/platform/files.h"
#include "core/platform/text.h"
#include "core/state/log.h"

namespace corvanet {

namespace {

// More rounds than this would only make a broken service look like a slow one.
constexpr int kMostRounds = 10;
// However long a service asks to be left alone, a run waits no longer than this between rounds.
constexpr double kLongestPauseSeconds = 120;

// The pause before the first round; each further round waits twice as long as the one before.
// Tests shorten it with CORVANET_RETRY_PAUSE_MS, as CORVANET_HTTP_TIMEOUT shortens the time-out.
double FirstPauseSeconds() {
  if (const char* text = std::getenv("CORVANET_RETRY_PAUSE_MS")) {
    int milliseconds = 0;
    if (ParseInteger(text, milliseconds) && milliseconds >= 0) return milliseconds / 1000.0;
  }
  return 1;
}

// Waits out the pause before a round; false when the user stopped the run meanwhile.
bool WaitBeforeRound(Session& session, double seconds) {
  const auto until = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
  while (std::chrono::steady_clock::now() < until) {
    if (StopRequested(session)) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  return !StopRequested(session);
}

// A list file of the datafiles to try again in one period, in list order; the walk reads it like
// the download list.
std::string WriteRetryList(Session& session, const std::vector<ListedDatafile>& datafiles) {
  std::string text;
  for (const ListedDatafile& datafile : datafiles) {
    if (datafile.period != session.run.DataPeriod) continue;
    text += '"' + datafile.name + "\",\"" + datafile.symbol + "\"\r\n";
  }
  if (text.empty()) return {};
  const std::string path = BaseFolder(session) + "RetryList.csv";
  if (!WriteWholeFile(path, text)) {
    Log(session, "DownLoadButton_Click - cannot write " + path + "; no retry of " +
                     session.run.DataPeriod + " datafiles");
    return {};
  }
  return path;
}

bool Matches(const DatafileFailure& failure, const std::vector<ListedDatafile>& datafiles) {
  return std::any_of(datafiles.begin(), datafiles.end(), [&](const ListedDatafile& datafile) {
    return datafile.symbol == failure.symbol && datafile.period == failure.period;
  });
}

// Takes the problems of this round's update files out of the summary: a period tried again
// reports afresh whatever still fails in it.
void WithdrawUpdateFiles(RunSummary& summary,
                         const std::vector<UnfetchedUpdateFile>& update_files) {
  for (const UnfetchedUpdateFile& update_file : update_files) {
    summary.not_updated -= update_file.not_updated;
    std::erase(summary.period_problems, update_file.problem);
  }
}

// After a round: a datafile that failed again keeps its place among the failures (list order)
// with the newer reason, one brought in leaves them. `first_new` is where the round's own
// failures begin.
void FoldRetriedFailures(RunSummary& summary, const std::vector<ListedDatafile>& datafiles,
                         std::size_t first_new) {
  std::vector<DatafileFailure>& failures = summary.failures;
  std::vector<bool> gone(failures.size(), false);
  for (std::size_t i = 0; i < first_new; ++i) {
    if (!Matches(failures[i], datafiles)) continue;
    gone[i] = true;
    for (std::size_t j = first_new; j < failures.size(); ++j) {
      if (!gone[j] && failures[j].symbol == failures[i].symbol &&
          failures[j].period == failures[i].period) {
        failures[i] = std::move(failures[j]);
        gone[i] = false;
        gone[j] = true;
        break;
      }
    }
  }
  std::vector<DatafileFailure> kept;
  for (std::size_t i = 0; i < failures.size(); ++i) {
    if (!gone[i]) kept.push_back(std::move(failures[i]));
  }
  failures = std::move(kept);
}

// Walks the period again over the datafiles that failed in it. Their update file came in, so it
// is read from the Base folder instead of fetched again.
void RetryDatafiles(Session& session, const std::vector<ListedDatafile>& datafiles, int total,
                    RunSummary& summary) {
  const std::string list_path = WriteRetryList(session, datafiles);
  if (list_path.empty()) return;
  UpdateFileIndex update_rows;
  std::string cause;
  FieldReader list;
  if (LoadUpdateFile(session, update_rows, cause) && list.Open(list_path)) {
    int records = 0;
    SingleFileUpdate(session, list, total, records, update_rows, summary);
  }
  list.Close();
  RemoveFile(list_path);
}

// Tells how many of the files tried again came in at last.
void CountRecovered(std::vector<ListedDatafile>& tried, RunSummary& summary) {
  std::sort(tried.begin(), tried.end(), [](const ListedDatafile& a, const ListedDatafile& b) {
    return std::tie(a.period, a.symbol) < std::tie(b.period, b.symbol);
  });
  tried.erase(std::unique(tried.begin(), tried.end(),
                          [](const ListedDatafile& a, const ListedDatafile& b) {
                            return a.period == b.period && a.symbol == b.symbol;
                          }),
              tried.end());
  summary.retried = static_cast<int>(tried.size());
  summary.recovered = 0;
  for (const ListedDatafile& file : tried) {
    const bool failed =
        file.symbol.empty()
            ? std::any_of(summary.period_problems.begin(), summary.period_problems.end(),
                          [&](const std::string& problem) {
                            return problem.starts_with(file.period + ": Update-" + file.period);
                          })
            : std::any_of(summary.failures.begin(), summary.failures.end(),
                          [&](const DatafileFailure& failure) {
                            return failure.symbol == file.symbol && failure.period == file.period;
                          });
    if (!failed) ++summary.recovered;
  }
}

}  // namespace

int RetryRoundsWanted(const WindowState& ui) {
  return std::clamp(static_cast<int>(LeadingNumber(ui.RetryNumber)), 0, kMostRounds);
}

void RetryTransientFailures(Session& session, RunSummary& summary) {
  const int rounds = RetryRoundsWanted(session.ui);
  RunState& run = session.run;
  // Every datafile and update file tried again, once each however many rounds it took; an update
  // file is the entry without a symbol.
  std::vector<ListedDatafile> tried;
  for (int round = 1; round <= rounds; ++round) {
    std::vector<ListedDatafile> datafiles = std::exchange(summary.transient_failures, {});
    std::vector<UnfetchedUpdateFile> update_files =
        std::exchange(summary.transient_update_files, {});
    const int files = static_cast<int>(datafiles.size() + update_files.size());
    if (files == 0 || !run.service_unusable.empty()) break;
    const double pause =
        std::min(kLongestPauseSeconds, std::max(std::ldexp(FirstPauseSeconds(), round - 1),
                                                static_cast<double>(run.retry_after_seconds)));
    run.retry_after_seconds = 0;
    const std::string heading = "Retry " + std::to_string(round) + " of " + std::to_string(rounds) +
                                ": " + std::to_string(files) + " file(s)";
    Log(session, "DownLoadButton_Click - " + heading + " after a pause of " +
                     TrimmedNumberText(pause) + " s");
    session.ui.Label13.caption = heading + " ... waiting " + TrimmedNumberText(pause) + " s";
    session.NotifyObserver();
    if (!WaitBeforeRound(session, pause)) {
      summary.stopped = true;
      summary.transient_failures = std::move(datafiles);
      summary.transient_update_files = std::move(update_files);
      break;
    }
    session.ui.Label13.caption = heading;
    WithdrawUpdateFiles(summary, update_files);
    const std::size_t first_new = summary.failures.size();
    tried.insert(tried.end(), datafiles.begin(), datafiles.end());
    for (const UnfetchedUpdateFile& file : update_files) tried.push_back({"", "", file.period});
    run.DatafileCounter = 0;
    UpdateFileIndex update_rows;
    for (int period = 1; period <= 4 && run.service_unusable.empty(); ++period) {
      DetermineInterval(session, period);
      if (run.DataPeriod.empty()) continue;
      const bool whole_period = std::any_of(
          update_files.begin(), update_files.end(),
          [&](const UnfetchedUpdateFile& file) { return file.period == run.DataPeriod; });
      if (whole_period) {
        RunPeriod(session, files, summary, update_rows);
      } else {
        RetryDatafiles(session, datafiles, files, summary);
      }
    }
    FoldRetriedFailures(summary, datafiles, first_new);
  }
  CountRecovered(tried, summary);
}

}  // namespace corvanet
