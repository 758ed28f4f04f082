#pragma once
// A period's walk of the download list, read a little ahead of the walk, so that the whole files
// its datafiles will need are already arriving over a pool of connections while earlier datafiles
// are merged.
//
// The walk itself does not change: it reads its records from here, and RetrieveDataFile asks here
// before it fetches. A body fetched ahead is only a candidate: it is taken for the first whole-file
// fetch of the very datafile it was fetched for, when that fetch asks for the same file with the
// same credentials, and only at the moment the walk would have fetched it, so the log lines, the
// fetch counts and every failure land exactly where a walk without fetching ahead puts them. A body
// no fetch asks for is dropped unseen; a fetch nothing was fetched ahead for is made then and
// there.
#include <cstdint>
#include <deque>
#include <memory>
#include <string>

#include "core/download/update_file_index.h"
#include "core/platform/fetch_pool.h"
#include "core/platform/field_reader.h"
#include "core/state/session.h"

namespace corvanet {

class FetchAhead {
 public:
  static constexpr int kDefaultConnections = 8;
  // CORVANET_CONNECTIONS when it holds a whole number from 1 to 64, else kDefaultConnections. With
  // 1 nothing is fetched ahead: each file is fetched when the walk reaches it.
  static int ConnectionsWanted();

  // Hooks itself into the session for RetrieveDataFile until it is destroyed. The list and the
  // update rows must outlive it.
  FetchAhead(Session& session, FieldReader& list, const UpdateFileIndex& update_rows);
  ~FetchAhead();
  FetchAhead(const FetchAhead&) = delete;
  FetchAhead& operator=(const FetchAhead&) = delete;

  // The walk's reading of the list, with FieldReader's meaning.
  bool AtEnd();
  bool ReadRecord(std::string& name, std::string& symbol);
  // Whether the whole file of the next record is already being fetched (or has arrived). Once the
  // user has asked the run to stop no further fetch is started: the walk finishes only the
  // datafiles whose files are on their way.
  bool NextIsArriving();

  // The fetch RetrieveDataFile makes for the datafile of the record read last.
  FetchResult Fetch(const FetchRequest& request, const std::string& local_path);

 private:
  struct Record {
    std::string name;
    std::string symbol;
    bool whole = true;             // false: the list ended with a name without a symbol
    FetchPool::Ticket ticket = 0;  // 0: nothing fetched ahead
    FetchRequest request;
    std::string local_path;
  };

  void Fill();
  void Plan(Record& record);
  bool NeedsWholeFile(std::string_view listed_symbol, const std::string& web_symbol,
                      const std::string& local_path, bool claimed_earlier) const;
  std::string BaseLastDate(std::string_view listed_symbol, const std::string& local_path) const;
  void Drop(Record& record);

  Session& session_;
  FieldReader& list_;
  const UpdateFileIndex& update_rows_;
  std::unique_ptr<FetchPool> pool_;
  std::deque<Record> ahead_;  // read, not yet handed to the walk
  Record current_;            // handed to the walk last
  bool list_ended_ = false;
  int unclaimed_ = 0;  // fetches made ahead and not yet taken or dropped
};

}  // namespace corvanet
