#include "core/state/writer_pool.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

#include "core/platform/text.h"
#include "core/state/log.h"

namespace corvanet {

namespace {
// Tasks handed over per thread and not yet finished: enough that no worker waits for the caller,
// few enough that the held log lines and the paths stay a handful.
constexpr std::size_t kTasksPerThread = 2;
}  // namespace

int WriterPool::ThreadsWanted() {
  int threads = 0;
  const char* text = std::getenv("CORVANET_WRITERS");
  if (text != nullptr && ParseInteger(text, threads) && threads >= 1 && threads <= kMaxThreads) {
    return threads;
  }
  const auto cores = static_cast<int>(std::thread::hardware_concurrency());
  return std::clamp(cores, 1, kMaxThreads);
}

WriterPool::WriterPool(Session& session, int threads) : session_(session) {
  if (threads <= 1) return;
  for (int i = 0; i < threads; ++i) threads_.emplace_back([this] { Work(); });
}

WriterPool::~WriterPool() {
  FinishAll();
  {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  work_.notify_all();
  for (std::thread& thread : threads_) thread.join();
}

void WriterPool::Work() {
  std::unique_lock lock(mutex_);
  for (;;) {
    work_.wait(lock, [this] { return stopping_ || next_to_write_ < entries_.size(); });
    if (next_to_write_ >= entries_.size()) return;
    Entry& entry = entries_[next_to_write_++];
    lock.unlock();
    entry.task->Write();
    lock.lock();
    entry.written = true;
    written_.notify_all();
  }
}

void WriterPool::Submit(std::unique_ptr<WriterTask> task) {
  if (threads_.empty()) {
    task->Write();
    task->Finish(session_);
    return;
  }
  for (const std::string& path : task->files) {
    if (files_in_use_.count(path) != 0) {
      FinishAll();
      break;
    }
  }
  while (entries_.size() >= kTasksPerThread * threads_.size()) FinishOldest();
  for (const std::string& path : task->files) ++files_in_use_[path];
  {
    const std::lock_guard lock(mutex_);
    entries_.push_back(Entry{std::move(task), false, {}});
  }
  work_.notify_one();
  if (entries_.size() == 1) caller_held_lines_ = session_.held_log_lines;
  session_.held_log_lines = &entries_.back().held_lines;
  FinishDone();
}

void WriterPool::Settle(const std::string& path) {
  if (files_in_use_.count(path) != 0) FinishAll();
}

void WriterPool::FinishAll() {
  while (!entries_.empty()) FinishOldest();
}

void WriterPool::FinishDone() {
  for (;;) {
    {
      const std::lock_guard lock(mutex_);
      if (entries_.empty() || !entries_.front().written) return;
    }
    FinishOldest();
  }
}

void WriterPool::FinishOldest() {
  {
    std::unique_lock lock(mutex_);
    written_.wait(lock, [this] { return entries_.front().written; });
  }
  // Every task before this one is finished, so its lines, and then those the caller logged after
  // handing it over, go where the log stood when it was handed over.
  Entry& entry = entries_.front();
  session_.held_log_lines = caller_held_lines_;
  entry.task->Finish(session_);
  for (std::string& line : entry.held_lines) AppendLogLine(session_, std::move(line));
  for (const std::string& path : entry.task->files) {
    const auto it = files_in_use_.find(path);
    if (--it->second == 0) files_in_use_.erase(it);
  }
  {
    const std::lock_guard lock(mutex_);
    entries_.pop_front();
    --next_to_write_;
  }
  if (!entries_.empty()) session_.held_log_lines = &entries_.back().held_lines;
}

}  // namespace corvanet
