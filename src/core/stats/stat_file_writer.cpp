// One datafile split into its statistic files, the names and folders of those files.
#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <span>

#include "core/download/datafile_names.h"
#include "core/platform/paths.h"
#include "core/platform/reuse_pool.h"
#include "core/platform/text.h"
#include "core/state/log.h"
#include "core/stats/composite_row.h"
#include "core/stats/single_stat_files.h"
#include "core/stats/statistic_catalogue.h"
#include "core/stats/value_text.h"

namespace corvanet {

namespace {

constexpr int kNoLimit = 100;

// "Limit to 8 Characters" ... "Limit to 15 Characters" exactly; any other text sets no real limit.
int NameLengthLimit(std::string_view setting) {
  constexpr std::string_view kLimits[] = {"Limit to 8 Characters",  "Limit to 9 Characters",
                                          "Limit to 10 Characters", "Limit to 11 Characters",
                                          "Limit to 12 Characters", "Limit to 13 Characters",
                                          "Limit to 14 Characters", "Limit to 15 Characters"};
  for (int i = 0; i < 8; ++i) {
    if (setting == kLimits[i]) return 8 + i;
  }
  return kNoLimit;
}

// Trim for the per-value hot path: inline, as nearly every text has one leading blank at most.
inline std::string_view TrimBlanks(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
  return text;
}

// The value as written: the replacement text when the value reads as zero and one is set.
inline std::string_view ReplacedIfZero(std::string_view value_text, const ZeroReplacement& zero) {
  return zero.active && LeadingNumber(value_text) == 0 ? std::string_view(zero.text) : value_text;
}

// Period folder inside the statistic's folder, or the other way round.
bool PeriodFirst(const WindowState& ui) {
  return ui.PeriodStatFilename && !ui.StatPeriodFileName;
}

// Kept from one datafile to the next. A pass splits hundreds of datafiles; handing these buffers
// back after each one made the allocator return the memory to the system and fault it in again
// for the next datafile, which cost a third of the pass.
struct ReusedBuffers {
  CompositeFile datafile;
  std::array<StatisticFile, kStatisticCount> files;
};
ReusePool<ReusedBuffers>& Buffers() {
  static ReusePool<ReusedBuffers> pool;
  return pool;
}

bool Fail(DatafileError& error, int number, std::string detail) {
  error.number = number;
  error.description = ErrorDescription(number);
  error.detail = std::move(detail);
  return false;
}

// Reads the datafile once and gathers every selected statistic's lines into its file. On false,
// `error` says why and nothing has been committed.
bool SplitDatafile(const StatFilesJob& job, std::span<StatisticFile> files, CompositeFile& datafile,
                   DatafileError& error) {
  const std::span<const StatisticDef* const> selected(job.statistics);
  const CloseOnReturn close{datafile};
  // The datafile first: when it is missing no file is even started.
  if (!datafile.Open(job.datafile) || !ReadCompositeHeader(datafile)) {
    error = datafile.error();
    return false;
  }
  for (std::size_t k = 0; k < selected.size(); ++k) {
    if (!files[k].Open(job.files[k])) {
      const AtomicFileWriter& writer = files[k].writer();
      return Fail(error, kErrorPathNotFound, writer.target() + ": " + writer.error());
    }
  }
  const ZeroReplacement& zero = job.zero;
  const bool month_first = job.month_first;
  ColumnSet wanted;
  wanted.set(month_first ? 2 : 1);  // RowDateText or RowDate
  // The statistic columns are converted only when their text is not already in written form.
  CompositeRow row;
  // Every statistic is a count or a volume: read straight from its member.
  std::array<const std::int32_t*, kStatisticCount> counts{};
  std::array<const double*, kStatisticCount> volumes{};
  for (std::size_t k = 0; k < selected.size(); ++k) {
    counts[k] = IntegerField(row, selected[k]->column);
    volumes[k] = DoubleField(row, selected[k]->column);
  }
  char value_buffer[kNumberTextCapacity];
  char head[16] = {};  // "date," of the row, shared by all its lines
  while (ReadCompositeRow(datafile, row, wanted)) {
    std::size_t head_size = 0;
    std::string_view long_date;  // not a date the service writes: taken the slow way
    if (month_first) {
      const std::string_view date = TrimBlanks(row.RowDateText);
      if (date.size() < sizeof head) {
        std::memcpy(head, date.data(), date.size());
        head_size = date.size();
      } else {
        long_date = date;
      }
    } else {
      head_size = static_cast<std::size_t>(
          std::to_chars(head, head + sizeof head - 1, row.RowDate).ptr - head);
    }
    head[head_size] = ',';
    for (std::size_t k = 0; k < selected.size(); ++k) {
      // A field already in the written form is copied as it stands.
      const int column = selected[k]->column;
      std::string_view value_text = datafile.FieldText(column);
      if (!CopiesAsWritten(value_text, column)) {
        if (!ReadCompositeColumn(datafile, row, column)) {
          error = datafile.error();
          return false;
        }
        value_text = FormatValue(counts[k] != nullptr ? *counts[k] : *volumes[k], value_buffer);
      }
      if (long_date.empty()) {
        files[k].WriteLine(head, head_size + 1, ReplacedIfZero(TrimBlanks(value_text), zero));
      } else {
        WriteStatisticRow(files[k], long_date, value_text, zero);
      }
    }
  }
  if (datafile.error().has_error()) {
    error = datafile.error();
    return false;
  }
  return true;
}

}  // namespace

std::string StatisticFolder(const WindowState& ui, std::string_view period,
                            std::string_view statistic) {
  return ui.PathToDataFiles + (PeriodFirst(ui) ? Folder(period) + Folder(statistic)
                                               : Folder(statistic) + Folder(period));
}

std::string StatisticFilePath(const Session& session, std::string_view listed_symbol,
                              std::string_view statistic) {
  const WindowState& ui = session.ui;
  std::string name(Trim(listed_symbol));
  if (ui.MaxFilenameLength != "Use Issue Symbol") {
    name += '-';
    name += statistic;
  }
  // The cut is blind: it may end on "-" or inside the symbol, and several statistics of one
  // composite may share a name; each statistic has its own folder, which keeps them apart.
  const auto limit = static_cast<std::size_t>(NameLengthLimit(ui.MaxFilenameLength));
  if (name.size() > limit) name.resize(limit);
  std::string path = StatisticFolder(ui, session.run.DataPeriod, statistic);
  path += name;
  path += ".csv";
  return path;
}

// The block has room behind its end for a whole 16-character head.
StatisticFile::StatisticFile() : block_(std::make_unique_for_overwrite<char[]>(kBlockSize + 16)) {}

bool StatisticFile::Open(const std::string& path) {
  used_ = 0;
  return writer_.Open(path);
}

void StatisticFile::Flush() {
  writer_.Write(std::string_view(block_.get(), used_));
  used_ = 0;
}

void StatisticFile::WriteLine(std::string_view head, std::string_view tail) {
  const std::size_t size = head.size() + tail.size() + kLineEnd.size();
  if (used_ + size > kBlockSize) Flush();
  if (size > kBlockSize) {
    writer_.Write(head);
    writer_.WriteLine(tail);
    return;
  }
  char* p = block_.get() + used_;
  std::memcpy(p, head.data(), head.size());
  std::memcpy(p + head.size(), tail.data(), tail.size());
  p[size - 2] = '\r';
  p[size - 1] = '\n';
  used_ += size;
}

void StatisticFile::WriteLine(const char (&head)[16], std::size_t head_size,
                              std::string_view tail) {
  const std::size_t size = head_size + tail.size() + kLineEnd.size();
  if (head_size > sizeof head || used_ + size > kBlockSize) {
    WriteLine(std::string_view(head, std::min(head_size, sizeof head)), tail);
    return;
  }
  char* p = block_.get() + used_;
  std::memcpy(p, head, sizeof head);
  std::memcpy(p + head_size, tail.data(), tail.size());
  p[size - 2] = '\r';
  p[size - 1] = '\n';
  used_ += size;
}

bool StatisticFile::Commit() {
  Flush();
  return writer_.Commit();
}

void StatisticFile::Discard() {
  used_ = 0;
  writer_.Discard();
}

bool OpenStatisticFile(const Session& session, std::string_view listed_symbol,
                       std::string_view statistic, StatisticFile& file) {
  return file.Open(StatisticFilePath(session, listed_symbol, statistic));
}

ZeroReplacement ZeroReplacementOf(std::string_view replace_zero_values) {
  return {LeadingNumber(replace_zero_values) != 0, std::string(Trim(replace_zero_values))};
}

void WriteStatisticRow(StatisticFile& file, std::string_view date_text, std::string_view value_text,
                       const ZeroReplacement& zero) {
  value_text = ReplacedIfZero(TrimBlanks(value_text), zero);
  date_text = TrimBlanks(date_text);
  // "date," then the value: both pieces are copied once, straight into the file's block.
  char head[64];
  if (date_text.size() < sizeof head) {
    std::memcpy(head, date_text.data(), date_text.size());
    head[date_text.size()] = ',';
    file.WriteLine(std::string_view(head, date_text.size() + 1), value_text);
  } else {
    file.WriteLine(std::string(date_text) + ",", value_text);
  }
}

void MakeStatDirectories(Session& session, std::string_view statistic) {
  LogEntry(session, "MakeStatDirectories");
  const std::string& root = session.ui.PathToDataFiles;
  // Each folder is tried on its own: one that exists (or cannot be made) does not stop the rest.
  if (PeriodFirst(session.ui)) {
    for (const std::string_view period : kPeriodNames) CreateFolder(root + std::string(period));
    for (const std::string_view period : kPeriodNames) {
      CreateFolder(root + Folder(period) + std::string(statistic));
    }
  } else {
    CreateFolder(root + std::string(statistic));
    for (const std::string_view period : kPeriodNames) {
      CreateFolder(root + Folder(statistic) + std::string(period));
    }
  }
}

// All or nothing for one composite and period. A careful trader would rather chart yesterday's
// complete files than today's files cut short at a malformed row: a cut file looks complete and
// silently loses every bar after the bad one. So the old files stay, the log says which datafile,
// line and column failed, and the pass goes on with the next composite. (Only a failing rename at
// the very end, such as a full disk, can leave some statistics new and others old; each file is
// whole either way.)
StatFilesJob StatFilesJobOf(const Session& session, std::string_view listed_symbol) {
  StatFilesJob job;
  for (const StatisticDef& statistic : StatisticCatalogue()) {
    if (session.ui.*statistic.box == 0) continue;
    job.statistics.push_back(&statistic);
    job.files.push_back(StatisticFilePath(session, listed_symbol, statistic.name));
  }
  job.datafile = DestinationPath(session);
  job.datafile_name = session.run.DestinationFileName;
  job.period = session.run.DataPeriod;
  job.zero = ZeroReplacementOf(session.ui.ReplaceZeroValues);
  job.month_first = session.ui.DateFormatMMDDYYYY;
  return job;
}

bool WriteStatFiles(const StatFilesJob& job, DatafileError& error) {
  if (job.statistics.empty()) return true;
  const auto buffers = Buffers().Take();
  const std::span<StatisticFile> files(buffers->files.data(), job.statistics.size());
  bool ok = SplitDatafile(job, files, buffers->datafile, error);
  for (std::size_t k = 0; ok && k < files.size(); ++k) {
    if (!files[k].Commit()) {
      ok = Fail(error, kErrorFileAccess,
                files[k].writer().target() + ": " + files[k].writer().error());
    }
  }
  // A discarded writer removes its temporary file and leaves the old file as it was.
  for (StatisticFile& file : files) file.Discard();
  return ok;
}

bool MakeIndividualStatFile(Session& session, std::string_view listed_symbol,
                            std::string* problem) {
  LogEntry(session, "MakeIndividualStatFile");
  const StatFilesJob job = StatFilesJobOf(session, listed_symbol);
  DatafileError error;
  if (WriteStatFiles(job, error)) return true;
  Log(session, ErrorTrapLine("MakeIndividualStatFile", error, job.datafile_name, job.period));
  if (problem != nullptr) *problem = error.Text();
  return false;
}

}  // namespace corvanet
