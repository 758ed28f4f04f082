#pragma once
// One datafile of one period: make sure a base copy is there, then merge the newest rows of the
// period update file into it and write the destination datafile.
#include <string>

#include "core/download/update_file_index.h"
#include "core/state/session.h"

namespace corvanet {

struct DatafileOutcome {
  enum class Kind { kMerged, kFetchedWhole, kFailed };
  Kind kind = Kind::kFailed;
  std::string reason;  // why it failed, for the run summary
  std::string note;    // what a user should know of a datafile that was written all the same
  bool ok() const { return kind != Kind::kFailed; }
};

// Fetches the base copy when it is missing or empty. False (with `reason`) when it could not be.
bool CheckForDataFile(Session& session, std::string& reason);

// The merge. The destination is replaced only by a complete new file; when no overlap is found a
// fresh base copy is fetched and the merge repeated once. `fetched_whole` tells whether this
// datafile's base copy was fetched whole earlier in its step (forced or missing).
DatafileOutcome UpdateDatafile(Session& session, const UpdateFileIndex& update_rows,
                               bool fetched_whole);

}  // namespace corvanet
