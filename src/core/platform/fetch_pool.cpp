#include "core/platform/fetch_pool.h"

#include <algorithm>
#include <condition_variable>
#include <map>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "core/platform/curl_transfer.h"

namespace corvanet {

namespace {

// The longest the transfer thread sleeps without being woken: libcurl's own time limits wake it
// sooner when they are due.
constexpr int kIdleWaitMs = 1000;

struct Job {
  enum class Stage { kWaiting, kRunning, kEnded };
  Job(FetchRequest request, std::string path)
      : transfer(std::move(request)), local_path(std::move(path)) {}
  curl::Transfer transfer;
  std::string local_path;
  FetchResult result;
  Stage stage = Stage::kWaiting;
  bool cancelled = false;
  CURL* handle = nullptr;
};

}  // namespace

// A job belongs to the transfer thread while it runs; the caller's thread touches it only while
// it waits or after it ended, under the mutex, so neither side ever sees the other's half-done
// work.
struct FetchPool::State {
  explicit State(int connection_count) : connections(std::max(1, connection_count)) {
    curl::GlobalInitOnce();
    multi = curl_multi_init();
    curl_multi_setopt(multi, CURLMOPT_MAX_HOST_CONNECTIONS, static_cast<long>(connections));
    curl_multi_setopt(multi, CURLMOPT_MAXCONNECTS, static_cast<long>(connections));
    thread = std::thread([this] { Run(); });
  }

  ~State() {
    {
      const std::lock_guard lock(mutex);
      stopping = true;
    }
    curl_multi_wakeup(multi);
    thread.join();
    // Transfers still under way when the pool ends (a slow answer, a cancel the thread had not
    // seen yet) give their handles back here.
    for (auto& [ticket, job] : jobs) {
      if (job->handle == nullptr) continue;
      curl_multi_remove_handle(multi, job->handle);
      handles.push_back(std::exchange(job->handle, nullptr));
    }
    jobs.clear();  // each body's writer removes its temporary file
    for (CURL* handle : handles) curl_easy_cleanup(handle);
    curl_multi_cleanup(multi);
  }

  void Run() {
    std::vector<Job*> starting;
    for (;;) {
      {
        const std::lock_guard lock(mutex);
        if (stopping) return;
        DropCancelled();
        for (auto& [ticket, job] : jobs) {
          if (running >= connections) break;
          if (job->stage != Job::Stage::kWaiting) continue;
          job->stage = Job::Stage::kRunning;
          ++running;
          starting.push_back(job.get());
        }
      }
      for (Job* job : starting) Start(*job);
      starting.clear();
      int still_running = 0;
      curl_multi_perform(multi, &still_running);
      int left = 0;
      bool connection_freed = false;
      while (CURLMsg* message = curl_multi_info_read(multi, &left)) {
        if (message->msg != CURLMSG_DONE) continue;
        CURL* handle = message->easy_handle;
        const CURLcode code = message->data.result;
        Job* job = nullptr;
        curl_easy_getinfo(handle, CURLINFO_PRIVATE, &job);
        FetchResult result = curl::ResultOf(handle, code, job->transfer);
        Release(*job);
        End(*job, std::move(result));
        connection_freed = true;
      }
      // A freed connection takes the next waiting fetch at once.
      if (!connection_freed) curl_multi_poll(multi, nullptr, 0, kIdleWaitMs, nullptr);
    }
  }

  // Needs the mutex.
  void DropCancelled() {
    for (auto it = jobs.begin(); it != jobs.end();) {
      Job& job = *it->second;
      if (!job.cancelled || job.stage != Job::Stage::kRunning) {
        ++it;
        continue;
      }
      Release(job);
      --running;
      it = jobs.erase(it);
    }
  }

  void Start(Job& job) {
    if (!job.transfer.body.Open(job.local_path)) {
      FetchResult result;
      result.status = FetchStatus::kLocalWriteFailed;
      result.detail = job.local_path + ": " + job.transfer.body.error();
      End(job, std::move(result));
      return;
    }
    CURL* handle = nullptr;
    if (handles.empty()) {
      handle = curl_easy_init();
    } else {
      handle = handles.back();
      handles.pop_back();
      curl_easy_reset(handle);
    }
    job.handle = handle;
    if (handle == nullptr) {
      FetchResult result;
      result.detail = "no transfer handle";
      End(job, std::move(result));
      return;
    }
    curl::SetFetchOptions(handle, job.transfer, curl::AuthorityCache::kShared);
    curl_easy_setopt(handle, CURLOPT_PRIVATE, &job);
    if (curl_multi_add_handle(multi, handle) != CURLM_OK) {
      handles.push_back(std::exchange(job.handle, nullptr));
      FetchResult result;
      result.detail = "the transfer could not be started";
      End(job, std::move(result));
    }
  }

  // Takes the job's handle out of the transfers; it stays for the next job, so its connection's
  // keep-alive and the handle's buffers are used again.
  void Release(Job& job) {
    if (job.handle == nullptr) return;
    curl_multi_remove_handle(multi, job.handle);
    handles.push_back(std::exchange(job.handle, nullptr));
  }

  void End(Job& job, FetchResult result) {
    // A body that will never be committed gives its file back at once.
    if (!result.ok()) job.transfer.body.Discard();
    const std::lock_guard lock(mutex);
    --running;
    job.result = std::move(result);
    job.stage = Job::Stage::kEnded;
    if (job.cancelled) {
      jobs.erase(std::find_if(jobs.begin(), jobs.end(),
                              [&job](const auto& entry) { return entry.second.get() == &job; }));
      return;
    }
    ended.notify_all();
  }

  const int connections;
  CURLM* multi = nullptr;
  std::vector<CURL*> handles;  // idle; used by the transfer thread alone
  int running = 0;
  std::mutex mutex;
  std::condition_variable ended;
  std::map<Ticket, std::unique_ptr<Job>> jobs;  // in the order they were added
  Ticket next_ticket = 1;
  bool stopping = false;
  std::thread thread;
};

FetchPool::FetchPool(int connections) : state_(std::make_unique<State>(connections)) {}

FetchPool::~FetchPool() = default;

int FetchPool::connections() const {
  return state_->connections;
}

FetchPool::Ticket FetchPool::Add(FetchRequest request, std::string local_path) {
  auto job = std::make_unique<Job>(std::move(request), std::move(local_path));
  Ticket ticket = 0;
  {
    const std::lock_guard lock(state_->mutex);
    ticket = state_->next_ticket++;
    state_->jobs.emplace(ticket, std::move(job));
  }
  curl_multi_wakeup(state_->multi);
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
    state_->ended.wait(lock, [&] { return it->second->stage == Job::Stage::kEnded; });
    job = std::move(it->second);
    state_->jobs.erase(it);
  }
  FetchResult result = std::move(job->result);
  curl::CommitBody(result, job->transfer);
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
      it->second->cancelled = true;
    } else {
      dropped = std::move(it->second);
      state_->jobs.erase(it);
    }
  }
  curl_multi_wakeup(state_->multi);
}

}  // namespace corvanet
