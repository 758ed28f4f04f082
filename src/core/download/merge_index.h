#pragma once
// What the last merge of each datafile already checked, so that the next one starts where the
// update rows begin instead of reading years of rows again.
//
// A merge reads its base copy from the top: the header, then every row (its shape and date order
// checked) up to the first one the update file also holds, and writes them to the datafile, where
// they are compared with what the datafile holds. Nearly all of that is the same from one run to
// the next: the base copy is only replaced by a fetch, and the rows before the update rows never
// change in the datafile. An entry records how far the last merge got through both files before
// it met an update row, and the identity of each file as it was read and as it was left. While both
// identities hold, those bytes are known: checked, without a row left out, and the same in both.
//
// The index is kept in Base/ as "MergeIndex.txt", written whole at the end of a run, each line
// with a checksum. It is only ever a shortcut: an entry whose files changed, a damaged line or a
// lost file means the next merge reads everything, as it would without the index.
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "core/platform/file_access.h"
#include "core/state/session.h"

namespace corvanet {

struct MergedPrefix {
  FileIdentity base;                 // the base copy, as read
  std::uint64_t base_bytes = 0;      // its header and rows before the first update row
  int base_lines = 0;                // the lines in those bytes
  std::string last_date;             // the date of the last row among them
  std::size_t field_commas = 0;      // the header's
  FileIdentity datafile;             // the datafile, as the merge left it
  std::uint64_t datafile_bytes = 0;  // what those lines are in it
  std::string base_last_date;        // of the base copy's last row; empty when it has none

  bool operator==(const MergedPrefix&) const = default;
};

class MergeIndex {
 public:
  static constexpr std::string_view kFileName = "MergeIndex.txt";

  // Loads the index of the session's Base folder (a missing file is an empty index, garbled lines
  // are logged and left out) and hooks itself into the session for the merges until destroyed.
  explicit MergeIndex(Session& session);
  ~MergeIndex();
  MergeIndex(const MergeIndex&) = delete;
  MergeIndex& operator=(const MergeIndex&) = delete;

  // The entry of the datafile at `datafile_path` when its base copy and the datafile are still
  // as it records them; nullptr otherwise.
  const MergedPrefix* Match(const std::string& datafile_path,
                            const std::optional<FileIdentity>& base,
                            const std::optional<FileIdentity>& datafile);
  // The date of the last row of the base copy the entry of the datafile at `datafile_path` was
  // made from, as its merge read it; nullptr when there is no entry or it does not know. The look
  // ahead of a run takes this for its guess instead of reading every copy's end.
  const std::string* BaseLastDate(const std::string& datafile_path) const;
  // Counts a merge that started where its entry said, for the log.
  void CountResumed() { ++resumed_; }
  int resumed() const { return resumed_; }
  void Put(const std::string& datafile_path, MergedPrefix prefix);
  void Forget(const std::string& datafile_path);

  // Logs how many merges it spared, and writes the index back when it changed; false (the old
  // file kept) when it cannot be written.
  bool Save();

 private:
  Session& session_;
  std::string path_;
  std::unordered_map<std::string, MergedPrefix> entries_;
  bool changed_ = false;
  int asked_ = 0;  // Match calls
  int resumed_ = 0;
};

}  // namespace corvanet
