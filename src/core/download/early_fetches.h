#pragma once
// Files a run will ask for at known steps, fetched side by side ahead of those steps as the period
// loop starts: the update files of the ticked periods (or, when the program is started to run a
// list, already while start-up fetches the master file), then the system message file and the
// master file of the closing steps. Each such fetch otherwise waits out a whole round trip of its
// own with nothing else going on, and on a run that only merges those waits are most of its time.
//
// A body fetched early is only taken by RetrieveDataFile when it asks for the same file with the
// same credentials, at the moment it would have fetched it, so the log lines and fetch counts land
// where they would without fetching early. An early failure that may have passed since (a network
// error, a cut body, 429 or 5xx) is not taken: the step fetches then and there, as it would have,
// instead of inheriting a failure from earlier in the run. A time-out is taken: it has already cost
// its wait, a service silent then is counted as silent as soon as it would be without fetching
// early, and the retry rounds try an update file again. A refusal (401, 404) or a body is what the
// step would have met. A body nobody asks for is dropped unseen.
//
// The early pool adds at most four connections to the walk's pool (CORVANET_CONNECTIONS).
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/platform/fetch_pool.h"
#include "core/state/session.h"

namespace corvanet {

class EarlyFetches {
 public:
  // Hooks itself into the session for RetrieveDataFile until it is destroyed.
  explicit EarlyFetches(Session& session);
  ~EarlyFetches();
  EarlyFetches(const EarlyFetches&) = delete;
  EarlyFetches& operator=(const EarlyFetches&) = delete;

  // Starts fetching what RetrieveDataFile(name, name) will fetch (every file a run fetches early
  // has one name on the service and on disk). Does nothing when the same request is already under
  // way, or when files are fetched one at a time (CORVANET_CONNECTIONS=1).
  void Start(std::string_view name);

  // The answer fetched early for exactly this request, its body brought into place now; nullopt
  // when none was, or when it was a failure that may have passed (then the caller fetches).
  std::optional<FetchResult> Take(const FetchRequest& request, const std::string& local_path);

 private:
  struct Pending {
    FetchRequest request;
    std::string local_path;
    FetchPool::Ticket ticket;
  };

  std::vector<Pending>::iterator Find(const FetchRequest& request, const std::string& local_path);

  Session& session_;
  // Opened for the first fetch started and closed when the last one has been taken, so its
  // connections are not held open through the rest of the run.
  std::unique_ptr<FetchPool> pool_;
  std::vector<Pending> pending_;
};

// Starts the update files of the periods list `list_number` will run, as its saved file ticks them,
// when the session has early fetches hooked in, the Base folder is there to take them, the log-in
// is filled in and the list names a vendor (the checks a run makes before it asks for anything);
// nothing otherwise. A start that goes on to run a list calls this as it fetches the master file,
// so the update files arrive side by side with it instead of a round trip later. Should the run
// tick other periods, what it does not ask for is dropped unseen.
void StartUpdateFilesOfList(Session& session, int list_number);

}  // namespace corvanet
