#pragma once
// Statistic and price files written on worker threads while the caller goes on with the next
// datafile. Each datafile's files are one task: its Write runs on a worker and touches nothing but
// its own files; its Finish runs back on the caller's thread, in the order the tasks were handed
// over, so what the caller logs and appends (converter batch lines) stays in list order. The log
// reads line for line as if each task had been done on the spot: lines the caller logs meanwhile
// are held back until the tasks handed over before them are finished.
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <unordered_map>
#include <vector>

#include "core/state/session.h"

namespace corvanet {

class WriterTask {
 public:
  virtual ~WriterTask() = default;
  // On a worker thread: must not touch the session or anything another task touches.
  virtual void Write() = 0;
  // On the caller's thread, after Write, in the order of Submit.
  virtual void Finish(Session& session) = 0;
  // Every file the task reads or writes: a task waits for earlier ones that use one of them, so
  // two datafiles sharing a file (one symbol listed twice, names cut to the same length) leave it
  // as the later one wrote it.
  std::vector<std::string> files;
};

class WriterPool {
 public:
  // Enough to keep a few cores busy; each thread keeps buffers for a datafile's files.
  static constexpr int kMaxThreads = 4;
  // CORVANET_WRITERS when it holds a whole number from 1 to kMaxThreads, else one per core (at
  // most kMaxThreads). With 1 every task is written and finished on the spot.
  static int ThreadsWanted();

  WriterPool(Session& session, int threads);
  // Finishes every task.
  ~WriterPool();
  WriterPool(const WriterPool&) = delete;
  WriterPool& operator=(const WriterPool&) = delete;

  // Hands a task over, finishing those before it that are done (and, when too many are under way,
  // waiting for the oldest).
  void Submit(std::unique_ptr<WriterTask> task);
  // Finishes every task under way up to the last one that uses `path`, before the caller changes
  // that file itself.
  void Settle(const std::string& path);
  void FinishAll();

 private:
  struct Entry {
    std::unique_ptr<WriterTask> task;
    bool written = false;
    std::vector<std::string> held_lines;  // logged by the caller after this task was handed over
  };

  void Work();
  // Finishes the oldest task, waiting for its Write when needed.
  void FinishOldest();
  void FinishDone();

  Session& session_;
  std::vector<std::thread> threads_;
  std::mutex mutex_;
  std::condition_variable work_;     // a task to write, or the end
  std::condition_variable written_;  // a task was written
  std::deque<Entry> entries_;        // handed over, not finished, in order
  std::size_t next_to_write_ = 0;    // index into entries_ of the first task no worker has taken
  bool stopping_ = false;
  std::unordered_map<std::string, int> files_in_use_;
  std::vector<std::string>* caller_held_lines_ = nullptr;  // the session's before we held lines
};

}  // namespace corvanet
