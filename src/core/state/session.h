#pragma once
// One session of the program: the window state, the form-level state of start-up, the state of the
// datafile in hand, and the services the platform provides. Handlers are free functions over it.
#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

#include "core/platform/clock.h"
#include "core/platform/http.h"
#include "core/platform/shell.h"
#include "core/state/window_state.h"

namespace corvanet {

struct ConversionLedger;
class EarlyFetches;
class FetchAhead;
class MergeIndex;
class WriterPool;

// Form-level state fixed at start-up and by the list and data-set choices.
struct AppState {
  std::string StartDirectory;  // where the program was started; "" = the current directory
  std::string BaseDirectory;
  std::string EditionDirectory;
  std::string VersionText;
  std::string ProgramDirectory;
  std::string LogDetail = "Not Set";
  int RunListNum = 0;  // list of an unattended run; 0 for an interactive start
  std::string CurrentListNumber = "0";
  // The download list's items as its file held them when last read or written.
  std::vector<std::string> ListItemsAsSaved;
  std::string MasterFileName;
  std::string DataSetURL;
  std::string StartupProblem;  // why start-up failed, for the front end to say; "" when it did not
};

// The datafile in hand during a run.
struct RunState {
  std::string DownloadSymbol;
  std::string DownloadName;
  std::string DataPeriod;
  std::string WebSymbol;
  std::string RemoteFileName;
  std::string RemoteUpdateFileName;
  std::string BaseFileName;
  std::string DestinationFileName;
  std::string DestinationUpdateFileName;
  std::int16_t GetFileCount = 0;
  std::int16_t DatafileCounter = 0;
  double RunStartTimer = 0;
  LocalDateTime RunStartTime;

  // How the data service has been answering, kept by every fetch of a run.
  bool last_fetch_transient = false;  // the last fetch failed for a reason that may pass
  long retry_after_seconds = 0;       // what it asked for, when it said how long to wait
  int time_outs_in_a_row = 0;
  // Why the run stops for the data service's sake (so many time-outs in a row, a certificate
  // that is not trusted); empty while it serves.
  std::string service_unusable;
};

// Told whenever a run changes what the window shows, and at every pause, so a window on another
// thread can repaint. Called on the thread that runs the handler.
class StateObserver {
 public:
  virtual ~StateObserver() = default;
  virtual void StateChanged(const WindowState& state) = 0;
};

struct Session {
  Session(Shell& shell_in, HttpClient& http_in, Clock& clock_in)
      : shell(shell_in), http(http_in), clock(clock_in) {}

  WindowState ui;
  AppState app;
  RunState run;
  Shell& shell;
  HttpClient& http;
  Clock& clock;
  StateObserver* observer = nullptr;
  // Set by a front end (from any thread) to stop a run cleanly: waits end and no further datafile
  // is started. Owned by the front end; nullptr when it offers no way to stop.
  const std::atomic<bool>* stop_requested = nullptr;
  long http_timeout_seconds = 60;
  // While a period's walk runs: the whole files fetched ahead of it, which RetrieveDataFile takes
  // instead of fetching them itself (download/fetch_ahead.h).
  FetchAhead* fetch_ahead = nullptr;
  // While a run goes: the update files, system message file and master file it fetches early,
  // which RetrieveDataFile takes when it reaches them (download/early_fetches.h).
  EarlyFetches* early_fetches = nullptr;
  // While a run goes: what the last merge of each datafile checked (download/merge_index.h);
  // nullptr: every merge reads its files whole.
  MergeIndex* merge_index = nullptr;
  // While a run walks its periods: what is made from a datafile just brought up to date (its price
  // files), handed to the walk's writers. Set by the run (app/download_run.cpp); nullptr: nothing.
  void (*after_datafile_updated)(Session&, WriterPool&) = nullptr;
  // While a run walks its periods with price files on: the converter calls written and the price
  // files that failed (pricefiles/conversion.h). nullptr: not recorded.
  ConversionLedger* conversion_ledger = nullptr;
  // While files are written on other threads: the log lines held back until the work handed over
  // before them is logged, so the log keeps its order (state/writer_pool.h). nullptr: straight to
  // the log file.
  std::vector<std::string>* held_log_lines = nullptr;

  bool logging() const { return ui.GenerateLogFile != 0; }
  void NotifyObserver() {
    if (observer != nullptr) observer->StateChanged(ui);
  }
};

inline bool StopRequested(const Session& session) {
  return session.stop_requested != nullptr && session.stop_requested->load();
}

// Lets the window repaint. Runs happen off the window's thread, so this only hands the state to the
// observer and never sleeps.
inline void Pause(Session& session, double /*seconds*/) {
  session.NotifyObserver();
}

}  // namespace corvanet
