#include "core/download/update_datafile.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "core/download/datafile_names.h"
#include "core/download/merge_index.h"
#include "core/download/retrieve.h"
#include "core/download/row_checks.h"
#include "core/platform/file_rewriter.h"
#include "core/platform/files.h"
#include "core/platform/line_reader.h"
#include "core/platform/text.h"
#include "core/state/log.h"

namespace corvanet {

namespace {

constexpr int kFetchGuard = 5;

enum class Pass {
  kMerged,
  kNoOverlap,  // every base row written, none of them among the update rows
  kGarbled,    // the base copy is empty or holds a row of another shape: nothing to keep
  kFailed,
  kIndexWrong,  // the merge index's entry does not describe the files: to be done without it
};

struct PassResult {
  Pass pass = Pass::kFailed;
  std::string last_date;  // of the last row written; empty when only the header was
  bool header_only = false;
  // How far a merge got through both files before the first update row, when it left no row out
  // on the way (the datafile's identity is filled in once it is committed).
  std::optional<MergedPrefix> checked;
};

// Rows left out of a pass because their date does not come after the row before, or because they
// hold control characters: counted, and logged once when the pass ends, so a hostile body of a
// million bad rows gives one line, not a million.
class LeftOutRows {
 public:
  explicit LeftOutRows(Session& session) : session_(session) {}
  LeftOutRows(const LeftOutRows&) = delete;
  LeftOutRows& operator=(const LeftOutRows&) = delete;
  ~LeftOutRows() {
    if (count_ == 0) return;
    Log(session_, "UpdateDatafile - " + session_.run.DestinationFileName + " - " +
                      std::to_string(count_) +
                      " row(s) out of date order or holding control characters left out, "
                      "the first in " +
                      first_);
  }
  bool none() const { return count_ == 0; }
  void Add(std::string_view where, int line = 0) {
    if (count_++ != 0) return;
    first_ = where;
    if (line > 0) first_ += " line " + std::to_string(line);
  }

 private:
  Session& session_;
  int count_ = 0;
  std::string first_;
};

// The date of the base copy's last row, read on from the first update row to the copy's end as it
// was opened (a few rows at most): the next run's look ahead finds it in the merge index instead of
// reading the end of every copy. Empty when that row holds no date or the rest cannot be read.
std::string LastDateOfTheRest(LineReader& base, std::uint64_t size, std::string_view match) {
  std::string date(RowDate(match));
  std::string_view line;
  while (base.offset() < size && base.Next(line)) {
    // The last line that holds more than blanks, as when the end is read on its own.
    line = TrimLineEnd(line);
    if (!line.empty()) date = HasRowDate(line) ? RowDate(line) : std::string_view();
  }
  return base.failed() ? std::string() : date;
}

PassResult& WithoutIndex(PassResult& result) {
  result.pass = Pass::kIndexWrong;
  result.checked.reset();
  return result;
}

// One pass over the base copy: the header, then the base rows up to and including the first one
// that is also an update row, then the update rows newer than it. Dates only go forward: a row
// whose date does not come after the last one written is left out. The destination is written but
// not committed. A garbled base copy is treated like one without overlap (a fresh copy is fetched),
// but what was written from it is never kept. Rows the last merge checked, before every update
// row, are taken as they stand in the datafile instead of being read and compared again.
PassResult MergeOnce(Session& session, const std::vector<std::string_view>& update_rows,
                     std::size_t service_row_commas, LineReader& base, FileRewriter& destination,
                     std::string& reason) {
  PassResult result;
  const std::string base_path = BaseFolder(session) + session.run.BaseFileName;
  // Closed on every way out: a fetch may replace the base copy right after this pass.
  struct CloseOnReturn {
    LineReader& reader;
    ~CloseOnReturn() { reader.Close(); }
  } close_base{base};
  if (!base.Open(base_path)) {
    reason = "base copy " + session.run.BaseFileName + " cannot be read";
    return result;
  }
  const std::string destination_path = DestinationPath(session);
  if (!destination.Open(destination_path)) {
    reason = "cannot write " + destination_path + ": " + destination.error();
    return result;
  }
  result.pass = Pass::kGarbled;
  const std::optional<FileIdentity> base_identity = base.identity();
  // What the last merge of this datafile checked, while both files are as it left them.
  const MergedPrefix* known =
      session.merge_index == nullptr
          ? nullptr
          : session.merge_index->Match(destination_path, base_identity, destination.old_identity());
  std::string header;
  std::size_t fields = 0;
  const auto read_header = [&] {
    std::string_view line;
    if (!base.Next(line)) {
      Log(session, "UpdateDatafile - base copy " + session.run.BaseFileName + " is empty");
      return false;
    }
    destination.WriteLine(line);
    header.assign(line);
    fields = CountFieldCommas(line);
    return true;
  };
  // Every update row must be of the known rows' shape and dated after them: an update row dated
  // among them may be one of them, and then they are all read again.
  if (known != nullptr &&
      !std::all_of(update_rows.begin(), update_rows.end(), [&](std::string_view row) {
        return HoldsControlCharacter(row) || (CountFieldCommas(row) == known->field_commas &&
                                              RowDate(row) > std::string_view(known->last_date));
      })) {
    known = nullptr;
  }
  if (known != nullptr) {
    fields = known->field_commas;
  } else if (!read_header()) {
    return result;
  }
  LeftOutRows left_out(session);

  // Update rows that do not have the datafile's shape would spoil it: leave them out.
  std::vector<std::string_view> rows;
  std::size_t misshapen = 0;
  for (const std::string_view row : update_rows) {
    if (HoldsControlCharacter(row)) {
      left_out.Add("the update rows of " + session.run.WebSymbol);
    } else if (CountFieldCommas(row) == fields) {
      rows.push_back(row);
    } else {
      ++misshapen;
      Log(session, "UpdateDatafile - update row for " + session.run.WebSymbol +
                       " does not match the datafile's columns; left out");
    }
  }
  if (misshapen > 0 && misshapen == update_rows.size()) {
    // Not one update row has the base copy's shape: the base copy is what is wrong.
    Log(session, "UpdateDatafile - " + session.run.BaseFileName +
                     " does not have the columns of the update rows");
    return result;
  }

  std::string& last_date = result.last_date;
  int number = 1;
  // Set until the first row after the known rows is written: anything unexpected there means the
  // entry does not describe these files (it was damaged and sealed again, say).
  bool at_seam = false;
  if (known != nullptr) {
    if (!destination.TakeAsWritten(known->datafile_bytes)) return WithoutIndex(result);
    base.SkipTo(known->base_bytes);
    number = known->base_lines;
    last_date = known->last_date;
    at_seam = true;
  }
  std::string match;  // the view into the reader's buffer would not outlive the next read
  std::string_view line;
  for (;;) {
    const std::uint64_t row_start = base.offset();
    const std::uint64_t written_before = destination.size();
    if (!base.Next(line)) break;
    ++number;
    line = Trim(line);
    // The row after the known rows is the one the last merge wrote there: it is never blank, out
    // of order or garbled, and the datafile holds it at the known place.
    if (line.empty()) {
      if (at_seam) return WithoutIndex(result);
      continue;
    }
    const RowShape shape = ShapeOf(line);
    if (shape.field_commas != fields || !HasRowDate(line)) {
      if (known != nullptr) return WithoutIndex(result);
      Log(session, "UpdateDatafile - " + session.run.BaseFileName + " line " +
                       std::to_string(number) + " is garbled");
      return result;
    }
    if (RowDate(line) <= std::string_view(last_date) || shape.control) {
      if (at_seam) return WithoutIndex(result);
      left_out.Add(session.run.BaseFileName, number);
      continue;
    }
    const bool update_row = std::find(rows.begin(), rows.end(), line) != rows.end();
    if (update_row && left_out.none() && !last_date.empty() && base_identity) {
      result.checked = MergedPrefix{.base = *base_identity,
                                    .base_bytes = row_start,
                                    .base_lines = number - 1,
                                    .last_date = last_date,
                                    .field_commas = fields,
                                    .datafile = {},
                                    .datafile_bytes = written_before,
                                    .base_last_date = {}};
    }
    destination.WriteLine(line);
    if (std::exchange(at_seam, false) && !destination.RepeatsOldContent()) {
      return WithoutIndex(result);
    }
    last_date.assign(RowDate(line));
    if (update_row) {
      match.assign(line);
      break;
    }
  }
  if (base.failed()) {
    reason = "read error in base copy " + session.run.BaseFileName;
    result.pass = Pass::kFailed;
    return result;
  }
  if (number == 1) {
    // A composite the service lists but has no bars for yet: its file is a header of the service's
    // row shape alone, and so is its datafile. Any other one-line body (an error page) is not.
    if (fields == service_row_commas && !HoldsControlCharacter(header)) {
      result.pass = Pass::kNoOverlap;
      result.header_only = true;
      return result;
    }
    Log(session, "UpdateDatafile - base copy " + session.run.BaseFileName + " has no rows");
    return result;
  }
  if (match.empty() || session.run.GetFileCount >= kFetchGuard) {
    result.pass = Pass::kNoOverlap;
    return result;
  }
  // Rows of the match's date are not written again, older ones are skipped, and so is any update
  // row out of date order.
  for (const std::string_view row : rows) {
    if (RowDate(row) > std::string_view(last_date)) {
      destination.WriteLine(row);
      last_date.assign(RowDate(row));
    } else if (RowDate(row) > RowDate(match)) {
      left_out.Add("the update rows of " + session.run.WebSymbol);
    }
  }
  if (known != nullptr) session.merge_index->CountResumed();
  if (result.checked) {
    result.checked->base_last_date = LastDateOfTheRest(base, base_identity->size, match);
  }
  result.pass = Pass::kMerged;
  return result;
}

// Keeps what a committed pass checked for the next merge of the datafile.
void RememberPass(Session& session, PassResult& written, const FileRewriter& destination) {
  if (session.merge_index == nullptr) return;
  if (written.pass != Pass::kMerged || !written.checked || !destination.identity()) {
    session.merge_index->Forget(destination.target());
    return;
  }
  written.checked->datafile = *destination.identity();
  session.merge_index->Put(destination.target(), std::move(*written.checked));
}

// A run merges thousands of datafiles: the reader's and the writer's buffers are kept from one to
// the next instead of being freed and allocated again for each, which made the heap shrink and
// grow back every time.
struct MergeFiles {
  LineReader base;
  FileRewriter destination;
};
MergeFiles& ReusedMergeFiles() {
  thread_local MergeFiles files;
  return files;
}

}  // namespace

bool CheckForDataFile(Session& session, std::string& reason) {
  Log(session, "CheckForDataFile");
  const auto size = FileSize(BaseFolder(session) + session.run.BaseFileName);
  if (size && *size >= 1) return true;
  const FetchResult fetched =
      RetrieveDataFile(session, session.run.RemoteFileName, session.run.BaseFileName);
  if (fetched.ok()) return true;
  reason = fetched.Describe() + " for " + session.run.RemoteFileName;
  return false;
}

DatafileOutcome UpdateDatafile(Session& session, const UpdateFileIndex& update_rows,
                               bool fetched_whole) {
  RunState& run = session.run;
  Log(session, "UpdateDatafile");
  DatafileOutcome outcome;
  if (run.GetFileCount >= kFetchGuard) {
    Log(session,
        "GetFileCount = " + std::to_string(run.GetFileCount) + " in UpdateDatafile - Exiting Sub");
    outcome.reason = "too many fetches for one datafile";
    return outcome;
  }
  // A datafile never moves backwards: whatever the service sends (a file cut short, a body of
  // stale rows), nothing replaces the destination with rows that end before its last date.
  // The date of the datafile's last row before this call, read from its end when the first pass
  // is to be committed (nothing is committed before).
  std::optional<std::string> kept_last_date;
  MergeFiles& files = ReusedMergeFiles();
  FileRewriter& destination = files.destination;
  const auto commit = [&](PassResult& written) {
    if (!kept_last_date) {
      const std::string last = destination.LastLineOfOld();
      kept_last_date = HasRowDate(last) ? std::string(RowDate(last)) : std::string();
    }
    if (written.last_date < *kept_last_date) {
      destination.Discard();
      outcome.reason = "the service's file ends on " +
                       (written.last_date.empty() ? std::string("no row") : written.last_date) +
                       ", before the datafile's last row " + *kept_last_date;
      Log(session,
          "UpdateDatafile - " + run.DestinationFileName + " kept as it was: " + outcome.reason);
      return false;
    }
    if (!destination.Commit()) {
      outcome.reason = "cannot write " + destination.target() + ": " + destination.error();
      return false;
    }
    RememberPass(session, written, destination);
    return true;
  };
  const std::string tag = run.DestinationFileName + run.DownloadSymbol;
  for (int attempts = 0;;) {
    const std::vector<std::string_view> rows = update_rows.RowsFor(run.WebSymbol);
    if (update_rows.EndsOnOtherSymbol(run.WebSymbol)) {
      // The rescan this replaces ended on another symbol's line; support reads this line so.
      Log(session, "DownloadSymbol - " + update_rows.last_symbol() + " WebSymbol - " +
                       run.WebSymbol + " Error Number:  0 - ");
    }
    PassResult written =
        MergeOnce(session, rows, update_rows.row_commas(), files.base, destination, outcome.reason);
    if (written.pass == Pass::kFailed) {
      destination.Discard();  // the reused writer must not keep a temporary file until the next one
      return outcome;
    }
    if (written.pass == Pass::kIndexWrong) {
      // A damaged or forged entry: nothing of the pass is kept, and the merge is done again from
      // the top, as without the index.
      destination.Discard();
      Log(session, "MergeIndex - the entry of " + destination.target() +
                       " does not describe its files; they are read whole");
      session.merge_index->Forget(destination.target());
      continue;
    }
    if (written.pass == Pass::kMerged) {
      if (!commit(written)) return outcome;
      outcome.kind =
          fetched_whole ? DatafileOutcome::Kind::kFetchedWhole : DatafileOutcome::Kind::kMerged;
      return outcome;
    }
    Log(session, "UpdateDatafile - " + tag + " - Can't update - getting full file");
    // The base copy is about to be replaced: no entry may outlive it, even where a file system's
    // coarse times could let the new copy pass for the old.
    if (session.merge_index != nullptr) session.merge_index->Forget(destination.target());
    // The destination keeps its old content until a merge on a fresh copy succeeds; only a second
    // clean pass without overlap is kept, since it holds the service's whole fresh file.
    bool kept_whole_file = false;
    if (attempts == 0 || written.pass == Pass::kGarbled) {
      destination.Discard();
    } else if (!commit(written)) {
      return outcome;
    } else {
      kept_whole_file = true;
    }
    const FetchResult fetched = RetrieveDataFile(session, run.RemoteFileName, run.BaseFileName);
    if (!fetched.ok() && !kept_whole_file) {
      outcome.reason = fetched.Describe() + " for " + run.RemoteFileName;
      return outcome;
    }
    fetched_whole = true;
    if (++attempts >= 2) {
      Log(session,
          "UpdateDatafile - " + tag + " - Could not update after downloading a fresh base file");
      if (!kept_whole_file) {
        outcome.reason = "no overlap with the update rows, even in a fresh base file";
        return outcome;
      }
      // The service's whole file is the datafile: it is complete, only newer than any update row
      // or not in the update file at all.
      outcome.kind = DatafileOutcome::Kind::kFetchedWhole;
      outcome.note = written.header_only ? "the service has no rows for it yet"
                                         : "the update file does not cover it";
      return outcome;
    }
  }
}

}  // namespace corvanet
