// The WinHTTP client (Windows): one connection kept for the one-at-a-time fetches, and a pool of
// worker threads, each with a keep-alive connection of its own, for the fetches side by side.
#include <algorithm>
#include <condition_variable>
#include <map>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "core/platform/fetch_pool.h"
#include "core/platform/fetched_body.h"
#include "core/platform/http.h"
#include "core/platform/winhttp_transfer.h"

namespace corvanet {

namespace {

class WinHttpClient final : public HttpClient {
 public:
  FetchResult FetchToFile(const FetchRequest& request, const std::string& local_path) override {
    AtomicFileWriter body(local_path);
    if (!body.is_open()) {
      FetchResult result;
      result.status = FetchStatus::kLocalWriteFailed;
      result.detail = local_path + ": " + body.error();
      return result;
    }
    FetchResult result = connection_.Fetch(request, body);
    CommitFetchedBody(result, body);
    return result;
  }

  std::unique_ptr<FetchPool> OpenPool(int connections) override {
    return std::make_unique<FetchPool>(connections);
  }

 private:
  winhttp::Connection connection_;
};

struct Job {
  enum class Stage { kWaiting, kRunning, kEnded };
  FetchRequest request;
  std::string local_path;
  AtomicFileWriter body;
  FetchResult result;
  Stage stage = Stage::kWaiting;
  bool cancelled = false;
};

}  // namespace

std::unique_ptr<HttpClient> MakeHttpClient() {
  return std::make_unique<WinHttpClient>();
}

// A job belongs to its worker while it runs; the caller's thread touches it only while it waits or
// after it ended, under the mutex.
struct FetchPool::State {
  explicit State(int connection_count) : connections(std::max(1, connection_count)) {
    for (int i = 0; i < connections; ++i) workers.emplace_back([this] { Work(); });
  }

  ~State() {
    {
      const std::lock_guard lock(mutex);
      stopping = true;
    }
    changed.notify_all();
    // A transfer under way ends by itself within its request's time limit.
    for (std::thread& worker : workers) worker.join();
  }

  // The first job added that no worker has taken; null when none waits. Needs the mutex.
  Job* NextWaiting() {
    for (auto& [ticket, job] : jobs) {
      if (job->stage == Job::Stage::kWaiting && !job->cancelled) return job.get();
    }
    return nullptr;
  }

  void Work() {
    winhttp::Connection connection;
    std::unique_lock lock(mutex);
    for (;;) {
      Job* job = nullptr;
      changed.wait(lock, [&] { return stopping || (job = NextWaiting()) != nullptr; });
      if (stopping) return;
      job->stage = Job::Stage::kRunning;
      lock.unlock();
      FetchResult result;
      if (job->body.Open(job->local_path)) {
        result = connection.Fetch(job->request, job->body);
      } else {
        result.status = FetchStatus::kLocalWriteFailed;
        result.detail = job->local_path + ": " + job->body.error();
      }
      // A body that will never be committed gives its file back at once.
      if (!result.ok()) job->body.Discard();
      lock.lock();
      job->result = std::move(result);
      job->stage = Job::Stage::kEnded;
      if (job->cancelled) {
        jobs.erase(std::find_if(jobs.begin(), jobs.end(),
                                [job](const auto& entry) { return entry.second.get() == job; }));
      }
      changed.notify_all();
    }
  }

  const int connections;
  std::mutex mutex;
  std::condition_variable changed;
  std::map<Ticket, std::unique_ptr<Job>> jobs;  // in the order they were added
  Ticket next_ticket = 1;
  bool stopping = false;
  std::vector<std::thread> workers;  // last: started once everything above is ready
};

FetchPool::FetchPool(int connections) : state_(std::make_unique<State>(connections)) {}

FetchPool::~FetchPool() = default;

int FetchPool::connections() const {
  return state_->connections;
}

FetchPool::Ticket FetchPool::Add(FetchRequest request, std::string local_path) {
  auto job = std::make_unique<Job>();
  job->request = std::move(request);
  job->local_path = std::move(local_path);
  Ticket ticket = 0;
  {
    const std::lock_guard lock(state_->mutex);
    ticket = state_->next_ticket++;
    state_->jobs.emplace(ticket, std::move(job));
  }
  state_->changed.notify_all();
  return ticket;
}

FetchResult FetchPool::Commit(Ticket ticket) {
  std::unique_ptr<Job> job;
  {
    std::unique_lock lock(state_->mutex);
    const auto it = state_->jobs.find(ticket);
    if (it == state_->jobs.end() || it->second->cancelled) {
      FetchResult unknown;
      unknown.detail = "no such fetch";
      return unknown;
    }
    state_->changed.wait(lock, [&] { return it->second->stage == Job::Stage::kEnded; });
    job = std::move(it->second);
    state_->jobs.erase(it);
  }
  FetchResult result = std::move(job->result);
  CommitFetchedBody(result, job->body);
  return result;
}

bool FetchPool::Begun(Ticket ticket) const {
  const std::lock_guard lock(state_->mutex);
  const auto it = state_->jobs.find(ticket);
  return it != state_->jobs.end() && it->second->stage != Job::Stage::kWaiting;
}

void FetchPool::Cancel(Ticket ticket) {
  std::unique_ptr<Job> dropped;  // destroyed outside the lock: removing its file takes a moment
  {
    const std::lock_guard lock(state_->mutex);
    const auto it = state_->jobs.find(ticket);
    if (it == state_->jobs.end()) return;
    if (it->second->stage == Job::Stage::kRunning) {
      it->second->cancelled = true;  // its worker drops it when the transfer ends
    } else {
      dropped = std::move(it->second);
      state_->jobs.erase(it);
    }
  }
}

}  // namespace corvanet
