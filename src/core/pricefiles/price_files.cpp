#include "core/pricefiles/price_files.h"

#include <cmath>
#include <cstdlib>
#include <memory>
#include <utility>

#include "core/download/datafile_names.h"
#include "core/platform/paths.h"
#include "core/platform/reuse_pool.h"
#include "core/pricefiles/conversion.h"
#include "core/state/log.h"
#include "core/state/writer_pool.h"
#include "core/stats/composite_row.h"
#include "core/stats/field_split.h"
#include "core/stats/value_text.h"

namespace corvanet {

namespace {

using W = WindowState;

constexpr std::array<std::string W::*, 6> kNoChoice{};

const std::array<PriceFileKind, 5> kKinds = {{
    {"OHLCVV",
     &W::OHLCVV,
     "PX",
     {"OpenPx", "HighPx", "LowPx", "ClosePx", "TotalVolume", "TradeVolume"},
     kNoChoice},
    {"EqWtOHLCVV",
     &W::EqWtOHLCVV,
     "PxEqWt",
     {"EqWtOpen", "EqWtHigh", "EqWtLow", "EqWtClose", "TotalVolume", "TradeVolume"},
     kNoChoice},
    {"UserDefFile1",
     &W::UserDefFile1,
     "PxFile1",
     {},
     {&W::Stat1File1, &W::Stat2File1, &W::Stat3File1, &W::Stat4File1, &W::Stat5File1,
      &W::Stat6File1}},
    {"UserDefFile2",
     &W::UserDefFile2,
     "PxFile2",
     {},
     {&W::Stat1File2, &W::Stat2File2, &W::Stat3File2, &W::Stat4File2, &W::Stat5File2,
      &W::Stat6File2}},
    {"UserDefFile3",
     &W::UserDefFile3,
     "PxFile3",
     {},
     {&W::Stat1File3, &W::Stat2File3, &W::Stat3File3, &W::Stat4File3, &W::Stat5File3,
      &W::Stat6File3}},
}};

// Lines are handed to the file in blocks of this size: few write calls, bounded memory.
constexpr std::size_t kBlockSize = 64 * 1024;

// A ticked kind while one datafile is written: its file, pending lines and resolved columns.
struct OpenKind {
  AtomicFileWriter file;
  std::string* block = nullptr;
  std::array<int, 6> columns{};  // 0 = a name the catalogue does not know: the value is 0
};

// Kept from one datafile to the next: the run calls this for every datafile, and handing these
// buffers back each time made the allocator return the memory to the system and fault it in
// again for the next datafile.
struct ReusedBuffers {
  CompositeFile datafile;
  std::array<std::string, 5> blocks;
};
ReusePool<ReusedBuffers>& Buffers() {
  static ReusePool<ReusedBuffers> pool;
  return pool;
}

// "," and a field already in the number rule's form, with the blank the rule puts before a value
// of 0 and above.
void AppendWrittenText(std::string& out, std::string_view text) {
  out += text.front() == '-' ? "," : ", ";
  out += text;
}

// "," and a numeric column of the row read last, copied when already in written form, else
// converted and written by the rule. False (file.error() says why) when it is no number.
bool AppendField(std::string& out, CompositeFile& file, CompositeRow& row, int column) {
  const std::string_view text = file.FieldText(column);
  if (CopiesAsWritten(text, column)) {
    AppendWrittenText(out, text);
    return true;
  }
  if (!ReadCompositeColumn(file, row, column)) return false;
  double value = 0;
  ColumnValue(row, column).ToDouble(value);
  out += ',';
  AppendValue(out, value, false);
  return true;
}

// "Stat3File2": the setting behind value column j of a user-defined kind.
std::string ColumnSettingName(const PriceFileKind& kind, std::size_t j) {
  return "Stat" + std::to_string(j + 1) + "File" +
         std::string(kind.box.substr(kind.box.size() - 1));
}

bool Fail(DatafileError& error, int number, std::string detail) {
  error.number = number;
  error.description = ErrorDescription(number);
  error.detail = std::move(detail);
  return false;
}

}  // namespace

namespace {

// Reads a value column of the row read last into `value` and writes it, for the kind whose line
// `out` is. False with `error` set when the field is no finite number: only that kind's file fails.
// Whether a value field reads as a finite number. The shared reader takes a number too large for a
// double as 0 (as the classic reader did); a price file must not, so its magnitude is checked too.
bool IsPriceNumber(std::string_view text) {
  double value = 0;
  if (!ParseDecimal(text, value) || !std::isfinite(value)) return false;
  return value != 0 || !std::isinf(std::strtod(std::string(text).c_str(), nullptr));
}

bool AppendPriceValue(std::string& out, CompositeFile& datafile, CompositeRow& row, int column,
                      std::size_t rows, DatafileError& error) {
  double value = 0;
  if (column == 0) {  // no statistic chosen
    out += ',';
    AppendValue(out, value, false);
    return true;
  }
  const std::string_view text = datafile.FieldText(column);
  if (CopiesAsWritten(text, column)) {
    AppendWrittenText(out, text);
    return true;
  }
  if (!text.empty() && !IsPriceNumber(text)) {
    Fail(error, kErrorTypeMismatch,
         "row " + std::to_string(rows) + " (" + std::string(datafile.FieldText(2)) +
             "): " + std::string(ColumnName(column)) + " holds \"" + std::string(text) +
             "\", which is no price");
    return false;
  }
  // The catalogue's own conversion, so whole-number columns round as everywhere else.
  if (!ReadCompositeColumn(datafile, row, column)) return false;
  ColumnValue(row, column).ToDouble(value);
  out += ',';
  AppendValue(out, value, false);
  return true;
}

}  // namespace

// The whole job for one datafile. A kind's file is committed only when every row was read and
// converted for it, so a failure leaves that price file as it was before (a half file would reach
// the converter and the charts as if it were complete); the other kinds go on.
bool WritePriceFiles(const PriceFilesJob& job, PriceFilesOutcome& outcome, DatafileError& error) {
  outcome = PriceFilesOutcome{};
  outcome.errors.resize(job.kinds.size());
  if (job.kinds.empty()) return true;
  const auto buffers = Buffers().Take();
  CompositeFile& datafile = buffers->datafile;
  const CloseOnReturn close{datafile};
  // The datafile first: when it is missing no file is even started.
  if (!datafile.Open(job.datafile) || !ReadCompositeHeader(datafile)) {
    error = datafile.error();
    return false;
  }
  std::array<OpenKind, 5> kinds;
  std::array<std::size_t, 5> live{};  // job kinds still being written
  std::size_t count = 0;
  for (std::size_t k = 0; k < job.kinds.size(); ++k) {
    const PriceFilesJob::Kind& kind = job.kinds[k];
    if (kind.problem.has_error()) {
      outcome.errors[k] = kind.problem;
      continue;
    }
    OpenKind& open = kinds[k];
    open.columns = kind.columns;
    if (!open.file.Open(kind.path)) {
      Fail(outcome.errors[k], kErrorPathNotFound, kind.path + ": " + open.file.error());
      continue;
    }
    if (job.header) open.file.WriteLine(kPriceFileHeader);
    open.block = &buffers->blocks[k];
    open.block->clear();
    live[count++] = k;
  }
  // Value columns are converted only when their text is not already in written form.
  ColumnSet wanted;
  wanted.set(0);  // Period
  CompositeRow row;
  std::size_t rows = 0;
  std::string head;  // ticker, name, period letter and date: the same for every kind
  std::string line;
  while (count > 0 && ReadCompositeRow(datafile, row, wanted)) {
    ++rows;
    head.assign(job.symbol).append(",").append(job.name).append(",");
    // Quarterly bars go to the converter as monthly ones.
    head.append(row.Period == "Q" ? std::string_view("M") : std::string_view(row.Period));
    if (!AppendField(head, datafile, row, 2)) {
      error = datafile.error();
      return false;
    }
    for (std::size_t t = 0; t < count;) {
      const std::size_t k = live[t];
      OpenKind& open = kinds[k];
      line = head;
      bool written = true;
      for (std::size_t j = 0; j < 6 && written; ++j) {
        written = AppendPriceValue(line, datafile, row, open.columns[j], rows, outcome.errors[k]);
      }
      if (datafile.error().has_error()) {
        error = datafile.error();
        return false;
      }
      if (!written) {
        open.file.Discard();
        live[t] = live[--count];
        continue;
      }
      WritePriceLine(*open.block, line);
      if (open.block->size() >= kBlockSize) {
        open.file.Write(*open.block);
        open.block->clear();
      }
      ++t;
    }
  }
  if (datafile.error().has_error()) {
    error = datafile.error();
    return false;
  }
  outcome.bars = rows;
  for (std::size_t t = 0; t < count; ++t) {
    const std::size_t k = live[t];
    OpenKind& open = kinds[k];
    open.file.Write(*open.block);
    if (!open.file.Commit()) {
      Fail(outcome.errors[k], kErrorFileAccess, open.file.target() + ": " + open.file.error());
    }
  }
  return true;
}

namespace {

// One datafile's price files as a task of the writer pool. The converter calls are appended when
// it finishes, in list order and only for the files that were committed, so a batch file never
// names a price file that was not written. A file without bars (a composite the service lists
// before it has data) gets no call: the converter has nothing to make of it.
class PriceFilesTask final : public WriterTask {
 public:
  explicit PriceFilesTask(PriceFilesJob job) : job_(std::move(job)) {
    files.push_back(job_.datafile);
    for (const PriceFilesJob::Kind& kind : job_.kinds) files.push_back(kind.path);
  }
  void Write() override { ok_ = WritePriceFiles(job_, outcome_, error_); }
  void Finish(Session& session) override {
    ConversionLedger* ledger = session.conversion_ledger;
    if (!ok_) {
      Log(session,
          ErrorTrapLine("CreateMetaStockPxFiles", error_, job_.datafile_name, job_.period));
      for (const PriceFilesJob::Kind& kind : job_.kinds) Report(ledger, kind, error_);
      return;
    }
    for (std::size_t k = 0; k < job_.kinds.size(); ++k) {
      const PriceFilesJob::Kind& kind = job_.kinds[k];
      const DatafileError& failed = outcome_.errors[k];
      if (failed.has_error()) {
        Log(session,
            ErrorTrapLine("CreateMetaStockPxFiles", failed, job_.datafile_name, job_.period));
        Report(ledger, kind, failed);
        continue;
      }
      if (kind.batch_file.empty()) continue;
      if (outcome_.bars == 0) {
        if (ledger != nullptr) ++ledger->kinds[kind.index].no_bars;
        continue;
      }
      if (AppendConverterCall(session, kind.batch_file, kind.path, kind.output_folder) &&
          ledger != nullptr) {
        ledger->kinds[kind.index].calls.push_back(
            {job_.symbol, outcome_.bars, kind.output_folder, DatafileLabel()});
      }
    }
  }

 private:
  std::string DatafileLabel() const { return job_.datafile_name + " " + job_.period; }
  void Report(ConversionLedger* ledger, const PriceFilesJob::Kind& kind,
              const DatafileError& failed) const {
    if (ledger == nullptr) return;
    ledger->failures.push_back({job_.symbol, job_.period,
                                std::string(PriceFileKinds()[kind.index].folder) +
                                    " price file not written: " + failed.detail});
  }

  PriceFilesJob job_;
  bool ok_ = false;
  PriceFilesOutcome outcome_;
  DatafileError error_;
};

}  // namespace

const std::array<PriceFileKind, 5>& PriceFileKinds() {
  return kKinds;
}

std::string PriceColumnProblem(std::string_view name) {
  // The drop-downs' own text for no choice, and an empty one: the value is 0.
  if (name.empty() || name == "Select One") return {};
  const int column = FindColumn(name);
  if (column == 0) return "names \"" + std::string(name) + "\", which is no statistic";
  if (IsTextColumn(column)) return "names " + std::string(name) + ", which holds text, not a price";
  return {};
}

std::string PriceFilePath(const Session& session, const PriceFileKind& kind) {
  return session.ui.PathToDataFiles + Folder(kind.folder) + Folder(session.run.DataPeriod) +
         session.run.DestinationFileName;
}

void WritePriceLine(std::string& out, std::string_view text) {
  out += text;
  out += kLineEnd;
}

PriceFilesJob PriceFilesJobOf(const Session& session) {
  const WindowState& ui = session.ui;
  const RunState& run = session.run;
  PriceFilesJob job;
  job.datafile = DestinationPath(session);
  job.datafile_name = run.DestinationFileName;
  job.period = run.DataPeriod;
  job.symbol = run.DownloadSymbol;
  job.name = run.DownloadName;
  job.header = ui.DoNotMakeMetaStockFormat == 0;
  // The choices are taken once per datafile, so every line of a file has the same columns.
  for (std::size_t k = 0; k < kKinds.size(); ++k) {
    const PriceFileKind& kind = kKinds[k];
    if (ui.*kind.ticked == 0) continue;
    PriceFilesJob::Kind& chosen = job.kinds.emplace_back();
    chosen.index = k;
    for (std::size_t j = 0; j < 6; ++j) {
      const bool user_choice = kind.chosen_columns[j] != nullptr;
      const std::string_view name =
          user_choice ? std::string_view(ui.*kind.chosen_columns[j]) : kind.columns[j];
      chosen.columns[j] = FindColumn(name);
      if (!user_choice || chosen.problem.has_error()) continue;
      const std::string problem = PriceColumnProblem(name);
      if (!problem.empty()) {
        Fail(chosen.problem, kErrorTypeMismatch,
             "value column " + std::to_string(j + 1) + " (" + ColumnSettingName(kind, j) + ") " +
                 problem);
      }
    }
    chosen.path = PriceFilePath(session, kind);
    if (ConvertsToMetaStock(ui)) {
      chosen.batch_file = ui.PathToLists + std::string(ConverterKinds()[k].batch_file);
      chosen.output_folder = ConverterOutputFolder(session, k);
    }
  }
  return job;
}

void CreateMetaStockPxFiles(Session& session, WriterPool& writers) {
  if (session.logging()) WriteLog(session, "CreateMetaStockPxFiles");
  if (session.ui.MakeMetaStockPxFiles == 0) {
    Log(session, "Exiting CreateMetaStockPxFiles");
    return;
  }
  writers.Submit(std::make_unique<PriceFilesTask>(PriceFilesJobOf(session)));
}

void CreateMetaStockPxFiles(Session& session) {
  WriterPool on_the_spot(session, 1);
  CreateMetaStockPxFiles(session, on_the_spot);
}

}  // namespace corvanet
