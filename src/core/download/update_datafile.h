#pragma once
// One datafile of one period: make sure a base copy is there, then merge the newest rows of the
// period update file into it and write the destination datafile.
#include <string>
#include <vector>

#include "core/download/update_file_index.h"
#include "core/state/session.h"

namespace corvanet {

struct DatafileOutcome {
  // kUnchanged: merged from an update file kept from an earlier run, which adds nothing to the
  // datafile; it stays as it was.
  enum class Kind { kMerged, kFetchedWhole, kUnchanged, kFailed };
  Kind kind = Kind::kFailed;
  std::string reason;  // why it failed, for the run summary
  std::string note;    // what a user should know of a datafile that was written all the same
  // Update rows the merge would not take, each with its place and why: "Update-Daily.csv line 37:
  // the row has 67 fields, not 68". The datafile keeps its own rows of their days.
  std::vector<std::string> rejected_rows;
  bool ok() const { return kind != Kind::kFailed; }
  bool written() const { return kind == Kind::kMerged || kind == Kind::kFetchedWhole; }
};

// Fetches the base copy when it is missing or empty. False (with `reason`) when it could not be.
bool CheckForDataFile(Session& session, std::string& reason);

// The merge. The destination is replaced only by a complete new file; when no overlap is found a
// fresh base copy is fetched and the merge repeated once. Every row taken is checked (its shape,
// a calendar date after the row before and no later than tomorrow): a service file with a bad row
// is refused whole, a bad update row is reported and its day kept as the datafile has it. A
// complete service file that ends before the datafile (a bar withdrawn) replaces it once the
// datafile is kept in Base/Replaced/<period>/. With a kept update file (`update_rows.kept()`)
// nothing is fetched for want of an overlap: the base copy alone is what the merge has.
// `fetched_whole` tells whether this datafile's base copy was fetched whole earlier in its step
// (forced or missing).
DatafileOutcome UpdateDatafile(Session& session, const UpdateFileIndex& update_rows,
                               bool fetched_whole);

}  // namespace corvanet
