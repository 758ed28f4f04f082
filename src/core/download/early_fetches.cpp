#include "core/download/early_fetches.h"

#include <algorithm>

#include "core/download/fetch_ahead.h"
#include "core/download/retrieve.h"

namespace corvanet {

namespace {

// The update files of the four periods: more early fetches than that never wait at one time.
constexpr int kMostConnections = 4;

}  // namespace

EarlyFetches::EarlyFetches(Session& session) : session_(session) {
  session_.early_fetches = this;
}

EarlyFetches::~EarlyFetches() {
  session_.early_fetches = nullptr;
  // The pool stops what is still under way and removes every body not taken.
}

void EarlyFetches::Start(std::string_view name) {
  const int connections = std::min(FetchAhead::ConnectionsWanted(), kMostConnections);
  if (connections <= 1) return;
  if (!pool_) pool_ = session_.http.OpenPool(connections);
  if (!pool_) return;  // a client that fetches one file at a time
  Pending pending{ServiceRequest(session_, name), BaseFilePath(session_, name), 0};
  pending.ticket = pool_->Add(pending.request, pending.local_path);
  pending_.push_back(std::move(pending));
}

std::optional<FetchResult> EarlyFetches::Take(const FetchRequest& request,
                                              const std::string& local_path) {
  const auto found = std::find_if(pending_.begin(), pending_.end(), [&](const Pending& pending) {
    return pending.local_path == local_path && pending.request == request;
  });
  if (found == pending_.end()) return std::nullopt;
  const FetchPool::Ticket ticket = found->ticket;
  pending_.erase(found);
  FetchResult result = pool_->Commit(ticket);
  if (pending_.empty()) pool_.reset();
  if (!result.ok() && result.transient() && result.status != FetchStatus::kTimedOut) {
    return std::nullopt;
  }
  return result;
}

}  // namespace corvanet
