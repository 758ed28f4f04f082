#include "core/download/update_datafile.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "core/download/datafile_names.h"
#include "core/download/merge_index.h"
#include "core/download/retrieve.h"
#include "core/download/row_checks.h"
#include "core/download/run_period.h"
#include "core/platform/file_rewriter.h"
#include "core/platform/files.h"
#include "core/platform/line_reader.h"
#include "core/platform/reuse_pool.h"
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
  std::size_t field_commas = 0;  // the base copy's header's
  // Why the base copy was refused (kGarbled), naming its line: for the summary when no fresh copy
  // does better.
  std::string refusal;
  // The update rows left out, for the summary.
  std::vector<std::string> rejected;
  // How far a merge got through both files before the first update row, when it left no row out
  // on the way (the datafile's identity is filled in once it is committed).
  std::optional<MergedPrefix> checked;
};

// The symbol's update rows as a merge takes them: those fit for the datafile, in file order, with
// their place among the symbol's rows, and the others with why.
struct CheckedUpdateRows {
  struct Fit {
    std::string_view text;
    std::size_t position;
  };
  std::vector<Fit> fit;
  std::vector<std::string> rejected;
  // The place of the first row that may not be written, nor any after it: the first one rejected,
  // or, of two rows that seem swapped, the earlier (which of the two is wrong cannot be told).
  std::size_t cut = std::string_view::npos;
  std::size_t misshapen = 0;  // rejected for their number of fields alone
};

CheckedUpdateRows CheckUpdateRows(const Session& session, const std::vector<UpdateRow>& rows,
                                  std::size_t field_commas, std::string_view latest_date) {
  CheckedUpdateRows checked;
  std::string_view previous;
  std::string_view before_previous;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const std::string_view row = rows[i].text;
    const RowFault fault = CheckRow(row, field_commas, previous, latest_date);
    if (fault == RowFault::kNone) {
      checked.fit.push_back({row, i});
      before_previous = std::exchange(previous, RowDate(row));
      continue;
    }
    checked.rejected.push_back(UpdateFileName(session.run.DataPeriod) + " line " +
                               std::to_string(rows[i].line) + ": " +
                               DescribeRowFault(fault, row, field_commas));
    std::size_t cut = i;
    if (fault == RowFault::kOrder && RowDate(row) > before_previous) {
      cut = checked.fit.back().position;
    }
    checked.cut = std::min(checked.cut, cut);
    if (fault == RowFault::kFields) ++checked.misshapen;
  }
  return checked;
}

// Writes the datafile's own rows dated after `last_date`, as checked rows: where an update row was
// rejected, the datafile keeps its row of that day and every row after it, instead of losing them
// to the merge. A rare path, so the datafile is read with a reader of its own.
void KeepDatafileRowsAfter(const std::string& path, std::size_t field_commas,
                           std::string_view latest_date, std::string& last_date,
                           FileRewriter& destination) {
  LineReader old;
  if (!old.Open(path)) return;
  std::string_view line;
  if (!old.Next(line)) return;  // the header
  while (old.Next(line)) {
    line = Trim(line);
    if (line.empty() || (HasRowDate(line) && RowDate(line) <= std::string_view(last_date))) {
      continue;
    }
    if (CheckRow(line, field_commas, last_date, latest_date) != RowFault::kNone) return;
    destination.WriteLine(line);
    last_date.assign(RowDate(line));
  }
}

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

// A file of the service that arrived whole: its last line ends with a line break and is a row of
// the header's shape (a body cut at a line boundary without a length passes for whole only when it
// is cut there).
bool EndsWithCompleteRow(const std::string& path, std::size_t field_commas) {
  const std::string last = LastLineOf(path);
  return EndsWithLineBreak(path) && HasRowDate(last) && CountFieldCommas(last) == field_commas;
}

PassResult& WithoutIndex(PassResult& result) {
  result.pass = Pass::kIndexWrong;
  result.checked.reset();
  return result;
}

// One pass over the base copy: the header, then the base rows up to and including the first one
// that is also an update row, then the update rows newer than it. The destination is written but
// not committed. Every base row is checked as the update rows are: a base copy with a bad row is
// refused whole (treated like one without overlap, so a fresh copy is fetched, but nothing written
// from it is kept). Rows the last merge checked, before every update row, are taken as they stand
// in the datafile instead of being read and compared again.
PassResult MergeOnce(Session& session, const std::vector<UpdateRow>& update_rows,
                     std::size_t service_row_commas, std::string_view latest_date, LineReader& base,
                     FileRewriter& destination, std::string& reason) {
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
  std::size_t& fields = result.field_commas;
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
  CheckedUpdateRows rows;
  if (known != nullptr) {
    fields = known->field_commas;
    rows = CheckUpdateRows(session, update_rows, fields, latest_date);
    // Every update row must have the known rows' shape (else the entry may be what is wrong) and
    // be dated after them: one dated among them may be one of them, and then they are all read
    // again.
    if (rows.misshapen > 0 ||
        !std::all_of(rows.fit.begin(), rows.fit.end(), [&](const CheckedUpdateRows::Fit& row) {
          return RowDate(row.text) > std::string_view(known->last_date);
        })) {
      known = nullptr;
    }
  }
  if (known == nullptr) {
    if (!read_header()) return result;
    rows = CheckUpdateRows(session, update_rows, fields, latest_date);
  }
  if (rows.misshapen > 0 && rows.misshapen == update_rows.size()) {
    // Not one update row has the base copy's shape: the base copy is what is wrong.
    Log(session, "UpdateDatafile - " + session.run.BaseFileName +
                     " does not have the columns of the update rows");
    result.refusal = session.run.BaseFileName + " does not have the columns of the update rows";
    return result;
  }
  result.rejected = std::move(rows.rejected);

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
  std::size_t match_position = 0;
  std::string_view line;
  for (;;) {
    const std::uint64_t row_start = base.offset();
    const std::uint64_t written_before = destination.size();
    if (!base.Next(line)) break;
    ++number;
    line = Trim(line);
    // The row after the known rows is the one the last merge wrote there: it is never blank or
    // bad, and the datafile holds it at the known place.
    if (line.empty()) {
      if (at_seam) return WithoutIndex(result);
      continue;
    }
    const RowFault fault = CheckRow(line, ShapeOf(line), fields, last_date, latest_date);
    if (fault != RowFault::kNone) {
      if (known != nullptr) return WithoutIndex(result);
      result.refusal = session.run.BaseFileName + " line " + std::to_string(number) + ": " +
                       DescribeRowFault(fault, line, fields);
      Log(session, "UpdateDatafile - " + result.refusal + "; the file is refused");
      return result;
    }
    const auto update_row =
        std::find_if(rows.fit.begin(), rows.fit.end(),
                     [&](const CheckedUpdateRows::Fit& row) { return row.text == line; });
    const bool is_update_row = update_row != rows.fit.end();
    if (is_update_row && result.rejected.empty() && !last_date.empty() && base_identity) {
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
    if (is_update_row) {
      match.assign(line);
      match_position = update_row->position;
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
    result.refusal = session.run.BaseFileName + " has no rows";
    return result;
  }
  if (match.empty() || session.run.GetFileCount >= kFetchGuard) {
    result.pass = Pass::kNoOverlap;
    return result;
  }
  // The update rows after the match, up to a rejected one: what a rejected row stood for is taken
  // from the datafile as it is, its own rows after the last one written kept.
  const std::size_t cut = rows.cut > match_position ? rows.cut : std::string_view::npos;
  for (const CheckedUpdateRows::Fit& row : rows.fit) {
    if (row.position <= match_position || row.position >= cut) continue;
    if (RowDate(row.text) > std::string_view(last_date)) {
      destination.WriteLine(row.text);
      last_date.assign(RowDate(row.text));
    }
  }
  if (cut != std::string_view::npos) {
    KeepDatafileRowsAfter(destination_path, fields, latest_date, last_date, destination);
  }
  if (known != nullptr) session.merge_index->CountResumed();
  // An entry is sealed only by a merge that took every update row: a rejected one may stand for a
  // row the next merge must read afresh.
  if (!result.rejected.empty()) result.checked.reset();
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
ReusePool<MergeFiles>& ReusedMergeFiles() {
  static ReusePool<MergeFiles> pool;
  return pool;
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
  // No row of the service is dated after tomorrow, by the clock of this run.
  const std::string latest_date = LatestRowDate(session.clock.Now());
  // A datafile never moves backwards: whatever the service sends (a file cut short, a body of
  // stale rows), nothing replaces the destination with rows that end before its last date, but a
  // complete file of the service's own (a bar withdrawn), once the datafile is kept aside.
  // The date of the datafile's last row before this call, read from its end when the first pass
  // is to be committed (nothing is committed before).
  std::optional<std::string> kept_last_date;
  const auto lease = ReusedMergeFiles().Take();
  MergeFiles& files = *lease;
  FileRewriter& destination = files.destination;
  const auto ends_early = [&](const PassResult& written) {
    if (!kept_last_date) {
      const std::string last = destination.LastLineOfOld();
      kept_last_date = HasRowDate(last) ? std::string(RowDate(last)) : std::string();
    }
    return written.last_date < *kept_last_date;
  };
  const auto commit = [&](PassResult& written) {
    if (!destination.Commit()) {
      outcome.reason = "cannot write " + destination.target() + ": " + destination.error();
      return false;
    }
    RememberPass(session, written, destination);
    return true;
  };
  // A pass that ends before the datafile does: the datafile stays as it was, unless the pass is a
  // whole file of the service that arrived complete.
  const auto commit_shorter = [&](PassResult& written) {
    const std::string base_path = BaseFolder(session) + run.BaseFileName;
    const bool complete = fetched_whole && EndsWithCompleteRow(base_path, written.field_commas);
    if (complete && written.rejected.empty()) {
      const std::string kept = ReplacedDatafilePath(session);
      if (!CreateFolders(kept.substr(0, kept.size() - run.DestinationFileName.size())) ||
          !CopyFile(session, destination.target(), kept)) {
        destination.Discard();
        outcome.reason = "the service's file ends on " + written.last_date +
                         ", before the datafile's last row " + *kept_last_date +
                         ", and the datafile could not be kept in " + kept + " to be replaced";
        return false;
      }
      if (!commit(written)) return false;
      outcome.note = "replaced by the service's shorter file; the previous one is in " + kept;
      Log(session, "UpdateDatafile - " + run.DestinationFileName + " " + outcome.note);
      return true;
    }
    destination.Discard();
    outcome.reason = "the service's file ends on " +
                     (written.last_date.empty() ? std::string("no row") : written.last_date) +
                     ", before the datafile's last row " + *kept_last_date +
                     (fetched_whole && !complete ? " (its last line is cut short)" : "");
    Log(session,
        "UpdateDatafile - " + run.DestinationFileName + " kept as it was: " + outcome.reason);
    return false;
  };
  // An update file kept from an earlier run adds nothing to a datafile that is already further.
  const auto keep_unchanged = [&] {
    destination.Discard();
    outcome.kind = DatafileOutcome::Kind::kUnchanged;
    return outcome;
  };
  const std::string tag = run.DestinationFileName + run.DownloadSymbol;
  std::string refusal;  // why the last base copy was refused, when one was
  for (int attempts = 0;;) {
    const std::vector<UpdateRow> rows = update_rows.RowsFor(run.WebSymbol);
    if (update_rows.EndsOnOtherSymbol(run.WebSymbol)) {
      // The rescan this replaces ended on another symbol's line; support reads this line so.
      Log(session, "DownloadSymbol - " + update_rows.last_symbol() + " WebSymbol - " +
                       run.WebSymbol + " Error Number:  0 - ");
    }
    PassResult written = MergeOnce(session, rows, update_rows.row_commas(), latest_date, files.base,
                                   destination, outcome.reason);
    outcome.rejected_rows = written.rejected;
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
    if (written.pass == Pass::kGarbled) refusal = written.refusal;
    // With a kept update file the base copy is all there is: no overlap is no reason to fetch.
    if (update_rows.kept() && written.pass != Pass::kGarbled) {
      if (ends_early(written)) return keep_unchanged();
      if (!commit(written)) return outcome;
      outcome.kind =
          fetched_whole ? DatafileOutcome::Kind::kFetchedWhole : DatafileOutcome::Kind::kMerged;
      return outcome;
    }
    // Update rows that end before the datafile on a base copy kept from earlier: the service may
    // have withdrawn a bar, which only its whole file tells.
    const bool withdrawn = written.pass == Pass::kMerged && !fetched_whole && ends_early(written);
    if (written.pass == Pass::kMerged && !withdrawn) {
      if (ends_early(written) ? !commit_shorter(written) : !commit(written)) return outcome;
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
    if (attempts == 0 || written.pass != Pass::kNoOverlap) {
      destination.Discard();
    } else if (ends_early(written) ? !commit_shorter(written) : !commit(written)) {
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
        // A refused file is named with the row that made it so, not blamed on the overlap.
        outcome.reason = !refusal.empty() && written.pass == Pass::kGarbled
                             ? refusal + "; the service's file is refused"
                             : "no overlap with the update rows, even in a fresh base file";
        return outcome;
      }
      // The service's whole file is the datafile: it is complete, only newer than any update row
      // or not in the update file at all.
      outcome.kind = DatafileOutcome::Kind::kFetchedWhole;
      if (outcome.note.empty()) {
        outcome.note = written.header_only ? "the service has no rows for it yet"
                                           : "the update file does not cover it";
      }
      return outcome;
    }
  }
}

}  // namespace corvanet
