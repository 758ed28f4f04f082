#include "core/download/early_fetches.h"

#include <algorithm>
#include <array>

#include "core/download/datafile_names.h"
#include "core/download/fetch_ahead.h"
#include "core/download/retrieve.h"
#include "core/download/run_period.h"
#include "core/lists/download_lists.h"
#include "core/platform/files.h"

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
  if (Find(pending.request, pending.local_path) != pending_.end()) return;
  pending.ticket = pool_->Add(pending.request, pending.local_path);
  pending_.push_back(std::move(pending));
}

std::optional<FetchResult> EarlyFetches::Take(const FetchRequest& request,
                                              const std::string& local_path) {
  const auto found = Find(request, local_path);
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

std::vector<EarlyFetches::Pending>::iterator EarlyFetches::Find(const FetchRequest& request,
                                                                const std::string& local_path) {
  return std::find_if(pending_.begin(), pending_.end(), [&](const Pending& pending) {
    return pending.local_path == local_path && pending.request == request;
  });
}

void StartUpdateFilesOfList(Session& session, int list_number) {
  if (session.early_fetches == nullptr || list_number < 1 || list_number > 7) return;
  // Nothing goes to the service before the run's own checks could pass: a log-in left empty or at
  // its placeholder, or a list without a vendor, is refused, and its requests would only count
  // as failed log-ins there.
  if (!LogInEntered(session.ui) || !SavedListNamesVendor(session, list_number)) return;
  // A first run makes the folder only as it starts.
  if (!DirectoryExists(BaseFolder(session))) return;
  const std::array<bool, 4> ticked = SavedListPeriods(session, list_number);
  for (std::size_t period = 0; period < ticked.size(); ++period) {
    if (ticked[period]) session.early_fetches->Start(UpdateFileName(kPeriodNames[period]));
  }
}

}  // namespace corvanet
