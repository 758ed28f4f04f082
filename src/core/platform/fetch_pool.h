#pragma once
// Whole files fetched side by side over a bounded pool of keep-alive connections (libcurl's multi
// interface, driven by a thread of its own). A fetch keeps its body in a temporary file beside its
// target until the caller commits it, so the caller decides when, and whether, the file it
// replaces changes: Commit gives exactly what HttpClient::FetchToFile would have given had it
// run at that moment, and a fetch that is not committed leaves nothing behind. A pool serves the
// requests of one run: the authorities one of them adds are trusted for the others too, so every
// request of a pool must add the same (as ServiceRequest's do).
#include <cstdint>
#include <memory>
#include <string>

#include "core/platform/http.h"

namespace corvanet {

class FetchPool {
 public:
  using Ticket = std::uint64_t;

  // At most `connections` transfers at once (at least one).
  explicit FetchPool(int connections);
  // Stops every transfer under way and removes every body not committed.
  ~FetchPool();
  FetchPool(const FetchPool&) = delete;
  FetchPool& operator=(const FetchPool&) = delete;

  // Queues a fetch; fetches start in the order they were added, as connections come free.
  Ticket Add(FetchRequest request, std::string local_path);
  // Waits until the fetch has ended (its request's time limit bounds the wait) and, when the
  // whole body arrived with a 2xx status, renames it over the local path. Each ticket once.
  FetchResult Commit(Ticket ticket);
  // Drops a fetch that will not be committed: its transfer is stopped, its body removed.
  void Cancel(Ticket ticket);
  // Whether the fetch has left the queue: its transfer is under way or has ended.
  bool Begun(Ticket ticket) const;
  int connections() const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace corvanet
