// One datafile split into its statistic files, the names and folders of those files.
#include <array>
#include <charconv>
#include <cstring>
#include <span>

#include "core/app/log.h"
#include "core/download/datafile_names.h"
#include "core/platform/paths.h"
#include "core/platform/text.h"
#include "core/stats/composite_row.h"
#include "core/stats/single_stat_files.h"
#include "core/stats/statistic_catalogue.h"
#include "core/stats/value_text.h"

namespace corvanet {

namespace {

// Lines are gathered per file and handed over in blocks: one write call per block instead of one
// per line, and memory stays bounded however long the datafile is.
constexpr std::size_t kBlockSize = 64 * 1024;
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

// Digits only, at most 15 of them, no leading zero (but "0" itself), an optional minus sign ("-0"
// excepted): exactly the texts the number rule writes, trimmed, for whole numbers.
inline bool IsPlainWholeNumber(std::string_view text) {
  if (!text.empty() && text.front() == '-') {
    text.remove_prefix(1);
    if (text == "0") return false;
  }
  if (text.empty() || text.size() > 15 || (text.front() == '0' && text.size() > 1)) return false;
  for (const char c : text) {
    if (c < '0' || c > '9') return false;
  }
  return true;
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
  std::array<std::string, kStatisticCount> blocks;
};
ReusedBuffers& Buffers() {
  thread_local ReusedBuffers buffers;
  return buffers;
}
struct CloseOnReturn {
  CompositeFile& file;
  ~CloseOnReturn() { file.Close(); }
};

bool Fail(DatafileError& error, int number, std::string detail) {
  error.number = number;
  error.description = ErrorDescription(number);
  error.detail = std::move(detail);
  return false;
}

// Reads the datafile once and gathers every selected statistic's lines into its file. On false,
// `error` says why and nothing has been committed.
bool SplitDatafile(Session& session, std::string_view listed_symbol,
                   std::span<const StatisticDef* const> selected, std::span<AtomicFileWriter> files,
                   DatafileError& error) {
  ReusedBuffers& buffers = Buffers();
  CompositeFile& datafile = buffers.datafile;
  const CloseOnReturn close{datafile};
  // The datafile first: when it is missing no file is even started.
  if (!datafile.Open(DestinationPath(session)) || !ReadCompositeHeader(datafile)) {
    error = datafile.error();
    return false;
  }
  for (std::size_t k = 0; k < selected.size(); ++k) {
    if (!OpenStatisticFile(session, listed_symbol, selected[k]->name, files[k])) {
      return Fail(error, kErrorPathNotFound, files[k].target() + ": " + files[k].error());
    }
  }
  std::array<std::string, kStatisticCount>& blocks = buffers.blocks;
  for (std::size_t k = 0; k < selected.size(); ++k) blocks[k].clear();
  const ZeroReplacement zero = ZeroReplacementOf(session.ui.ReplaceZeroValues);
  const bool month_first = session.ui.DateFormatMMDDYYYY;
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
  char date_buffer[16];
  char value_buffer[kNumberTextCapacity];
  while (ReadCompositeRow(datafile, row, wanted)) {
    std::string_view date_text;
    if (month_first) {
      date_text = TrimBlanks(row.RowDateText);
    } else {
      const auto end = std::to_chars(date_buffer, date_buffer + sizeof date_buffer, row.RowDate);
      date_text = std::string_view(date_buffer, static_cast<std::size_t>(end.ptr - date_buffer));
    }
    for (std::size_t k = 0; k < selected.size(); ++k) {
      // A plain whole number is already in the written form, so it is copied as it stands.
      const int column = selected[k]->column;
      std::string_view value_text = datafile.FieldText(column);
      if (!IsPlainWholeNumber(value_text)) {
        if (!ReadCompositeColumn(datafile, row, column)) {
          error = datafile.error();
          return false;
        }
        value_text = FormatValue(counts[k] != nullptr ? *counts[k] : *volumes[k], value_buffer);
      }
      WriteStatisticRow(blocks[k], date_text, value_text, zero);
      if (blocks[k].size() >= kBlockSize) {
        files[k].Write(blocks[k]);
        blocks[k].clear();
      }
    }
  }
  if (datafile.error().has_error()) {
    error = datafile.error();
    return false;
  }
  for (std::size_t k = 0; k < selected.size(); ++k) files[k].Write(blocks[k]);
  return true;
}

}  // namespace

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
  const std::string& period = session.run.DataPeriod;
  std::string path = ui.PathToDataFiles;
  path += PeriodFirst(ui) ? Folder(period) + Folder(statistic) : Folder(statistic) + Folder(period);
  path += name;
  path += ".csv";
  return path;
}

bool OpenStatisticFile(const Session& session, std::string_view listed_symbol,
                       std::string_view statistic, AtomicFileWriter& file) {
  return file.Open(StatisticFilePath(session, listed_symbol, statistic));
}

ZeroReplacement ZeroReplacementOf(std::string_view replace_zero_values) {
  return {LeadingNumber(replace_zero_values) != 0, std::string(Trim(replace_zero_values))};
}

void WriteStatisticRow(std::string& out, std::string_view date_text, std::string_view value_text,
                       const ZeroReplacement& zero) {
  value_text = TrimBlanks(value_text);
  if (zero.active && LeadingNumber(value_text) == 0) value_text = zero.text;
  date_text = TrimBlanks(date_text);
  // One resize and two copies: this runs for every value of every statistic file.
  const std::size_t at = out.size();
  out.resize(at + date_text.size() + 1 + value_text.size() + kLineEnd.size());
  char* p = out.data() + at;
  std::memcpy(p, date_text.data(), date_text.size());
  p += date_text.size();
  *p++ = ',';
  std::memcpy(p, value_text.data(), value_text.size());
  p += value_text.size();
  std::memcpy(p, kLineEnd.data(), kLineEnd.size());
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
bool MakeIndividualStatFile(Session& session, std::string_view listed_symbol,
                            std::string* problem) {
  LogEntry(session, "MakeIndividualStatFile");
  std::array<const StatisticDef*, kStatisticCount> selected{};
  std::size_t count = 0;
  for (const StatisticDef& statistic : StatisticCatalogue()) {
    if (session.ui.*statistic.box != 0) selected[count++] = &statistic;
  }
  if (count == 0) return true;
  // Destroyed without a commit, a writer removes its temporary file and leaves the old file.
  std::array<AtomicFileWriter, kStatisticCount> files;
  DatafileError error;
  bool ok = SplitDatafile(session, listed_symbol, std::span(selected.data(), count),
                          std::span(files.data(), count), error);
  for (std::size_t k = 0; ok && k < count; ++k) {
    if (!files[k].Commit()) {
      ok = Fail(error, kErrorFileAccess, files[k].target() + ": " + files[k].error());
    }
  }
  if (ok) return true;
  Log(session, ErrorTrapLine("MakeIndividualStatFile", error, session.run.DestinationFileName,
                             session.run.DataPeriod));
  if (problem != nullptr) *problem = error.Text();
  return false;
}

}  // namespace corvanet
