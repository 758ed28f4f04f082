#include "core/download/fetch_ahead.h"

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <utility>

#include "core/download/datafile_names.h"
#include "core/download/merge_index.h"
#include "core/download/retrieve.h"
#include "core/lists/symbols.h"
#include "core/platform/files.h"
#include "core/platform/paths.h"
#include "core/platform/text.h"

namespace corvanet {

namespace {

// Bodies waiting to be taken, per connection: enough that every connection stays busy while the
// walk merges, few enough that the temporary files and open descriptors stay a handful.
constexpr int kBodiesPerConnection = 4;
// Records read ahead of the walk. Most records of an incremental run need no whole file, so the
// lookahead runs further than the bodies it holds; each record is a few short texts.
constexpr std::size_t kRecordsAhead = 256;

}  // namespace

int FetchAhead::ConnectionsWanted() {
  const char* text = std::getenv("CORVANET_CONNECTIONS");
  int connections = 0;
  if (text == nullptr || !ParseInteger(text, connections) || connections < 1 || connections > 64) {
    return kDefaultConnections;
  }
  return connections;
}

FetchAhead::FetchAhead(Session& session, FieldReader& list, const UpdateFileIndex& update_rows)
    : session_(session), list_(list), update_rows_(update_rows) {
  const int connections = ConnectionsWanted();
  if (connections > 1) pool_ = session.http.OpenPool(connections);
  session_.fetch_ahead = this;
}

FetchAhead::~FetchAhead() {
  session_.fetch_ahead = nullptr;
  Drop(current_);
  for (Record& record : ahead_) Drop(record);
}

void FetchAhead::Drop(Record& record) {
  if (record.ticket == 0) return;
  pool_->Cancel(record.ticket);
  record.ticket = 0;
  --unclaimed_;
}

bool FetchAhead::AtEnd() {
  Fill();
  return ahead_.empty();
}

bool FetchAhead::ReadRecord(std::string& name, std::string& symbol) {
  Fill();
  if (ahead_.empty()) return false;
  // A body the previous datafile did not ask for is not for anyone else.
  Drop(current_);
  current_ = std::move(ahead_.front());
  ahead_.pop_front();
  name = current_.name;
  symbol = current_.symbol;
  Fill();
  return current_.whole;
}

bool FetchAhead::NextIsArriving() {
  Fill();
  return pool_ && !ahead_.empty() && ahead_.front().ticket != 0 &&
         pool_->Begun(ahead_.front().ticket);
}

void FetchAhead::Fill() {
  // Without a pool the list is read one record at a time, as the walk reads it.
  const std::size_t records_ahead = pool_ ? kRecordsAhead : 1;
  const int bodies = pool_ ? pool_->connections() * kBodiesPerConnection : 0;
  while (!list_ended_ && ahead_.size() < records_ahead && (!pool_ || unclaimed_ < bodies)) {
    if (list_.AtEnd()) {
      list_ended_ = true;
      break;
    }
    Record& record = ahead_.emplace_back();
    record.whole = list_.ReadRecord(record.name, record.symbol);
    if (!record.whole) {
      list_ended_ = true;  // the walk stops at this record
      break;
    }
    // Once a stop is asked for, records are still read but nothing more is fetched.
    if (pool_ && !StopRequested(session_)) Plan(record);
  }
}

// Names the record's files as SetDatafileNames will, without its log lines or the run state, and
// starts the whole file's fetch when the walk will ask for it.
void FetchAhead::Plan(Record& record) {
  const RunState& run = session_.run;
  if (run.DataPeriod == "Quarterly" && IsSkippedInQuarterly(record.symbol)) return;
  const std::string web_symbol = ServiceForm(record.symbol);
  if (!IsSafeFileNamePart(web_symbol)) return;
  const std::string remote_name = web_symbol + run.DataPeriod + "-CompositeStats.csv";
  std::string local_path = BaseFolder(session_) + remote_name;
  // Two records naming one base copy: the first one's fetch decides what the second finds.
  const auto same_base = [&](const Record& other) {
    return &other != &record && other.ticket != 0 && other.local_path == local_path;
  };
  const bool claimed_earlier =
      same_base(current_) || std::any_of(ahead_.begin(), ahead_.end(), same_base);
  if (!NeedsWholeFile(record.symbol, web_symbol, local_path, claimed_earlier)) return;
  record.request = ServiceRequest(session_, remote_name);
  record.local_path = std::move(local_path);
  record.ticket = pool_->Add(record.request, record.local_path);
  ++unclaimed_;
}

// Whether the walk will fetch the base copy whole: a forced download always does; otherwise a
// base copy that is missing or empty, or one whose rows end before the period's first update row
// for the symbol (so no row can overlap), or one the update file holds no rows for. A wrong guess
// costs a transfer, never a difference on disk: the walk only takes what it asks for.
bool FetchAhead::NeedsWholeFile(std::string_view listed_symbol, const std::string& web_symbol,
                                const std::string& local_path, bool claimed_earlier) const {
  // A service that does not answer is asked nothing more.
  if (!session_.run.service_unusable.empty()) return false;
  if (session_.ui.ForceFullDownload != 0) return true;
  if (claimed_earlier) return false;
  // Merged with a kept update file, a datafile fetches only a missing base copy.
  if (update_rows_.kept()) {
    const auto size = FileSize(local_path);
    return !size || *size == 0;
  }
  std::optional<std::string_view> first_update;
  for (const UpdateRow& row : update_rows_.RowsFor(web_symbol)) {
    if (!HasRowDate(row.text)) continue;
    first_update = std::min(first_update.value_or(RowDate(row.text)), RowDate(row.text));
  }
  if (!first_update) return true;
  const std::string last_date = BaseLastDate(listed_symbol, local_path);
  return last_date.empty() || last_date < *first_update;
}

// The date of the base copy's last row (empty when it has none): from the merge index when its
// entry for the datafile knows it (the copy is only ever replaced by a fetch, which drops the
// entry), else from the copy's end.
std::string FetchAhead::BaseLastDate(std::string_view listed_symbol,
                                     const std::string& local_path) const {
  if (session_.merge_index != nullptr) {
    const std::string datafile =
        DestinationPathAhead(session_, session_.run.DataPeriod, listed_symbol);
    if (const std::string* date = session_.merge_index->BaseLastDate(datafile)) {
      return *date;
    }
  }
  const std::string last = LastLineOf(local_path);
  return HasRowDate(last) ? std::string(RowDate(last)) : std::string();
}

FetchResult FetchAhead::Fetch(const FetchRequest& request, const std::string& local_path) {
  // Only the datafile's first whole-file fetch is made ahead; any later one is its own.
  if (current_.ticket != 0) {
    const FetchPool::Ticket ticket = std::exchange(current_.ticket, 0);
    --unclaimed_;
    if (request == current_.request && local_path == current_.local_path) {
      FetchResult result = pool_->Commit(ticket);
      Fill();
      return result;
    }
    pool_->Cancel(ticket);
  }
  return session_.http.FetchToFile(request, local_path);
}

}  // namespace corvanet
