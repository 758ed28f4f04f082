#include "core/pricefiles/conversion.h"

#include <chrono>
#include <thread>

#include "core/download/datafile_names.h"
#include "core/platform/files.h"
#include "core/platform/line_reader.h"
#include "core/platform/paths.h"
#include "core/platform/text.h"
#include "core/pricefiles/price_files.h"
#include "core/state/log.h"

namespace corvanet {

namespace {

const std::array<ConverterKind, 5> kConverterKinds = {{
    {"MakePxFiles.bat", "", "Generating Metastock Price Files ... (Started at ",
     "Now generating MetaStock Format Price Files"},
    {"MakeEqWtPxFiles.bat", "EqWtPriceFiles",
     "Generating Equal Weight Price Files ... (Started at ",
     "Now generating Equal Weight Price Files"},
    {"MakeFile1PxFiles.bat", "PxFile1", "Generating Custom Price Files 1 ... (Started at ",
     "Now generating Custom Price Files 1"},
    {"MakeFile2PxFiles.bat", "PxFile2", "Generating Custom Price Files 2 ... (Started at ",
     "Now generating Custom Price Files 2"},
    {"MakeFile3PxFiles.bat", "PxFile3", "Generating Custom Price Files 3 ... (Started at ",
     "Now generating Custom Price Files 3"},
}};

constexpr std::string_view kConverterCall = "PxFiles -f ";
constexpr std::string_view kCompletionCall = "Call Complete.exe";
constexpr auto kPollInterval = std::chrono::milliseconds(250);
// How long a batch may take to end once its completion mark is set, and how often to look.
constexpr auto kBatchEndLimit = std::chrono::seconds(10);
constexpr auto kBatchEndPoll = std::chrono::milliseconds(5);
constexpr std::size_t kStampLength = 20;  // "2026-11-23 08:30:00 " before each converter log line

std::string FlagFile(const Session& session) {
  return session.ui.PathToLists + "Complete.txt";
}

// The number Complete.txt holds; 0 when it is missing or holds none.
int ReadFlag(const Session& session) {
  const std::optional<std::string> text = ReadWholeFile(FlagFile(session));
  return text ? static_cast<int>(LeadingNumber(*text)) : 0;
}

bool WriteFlagZero(Session& session) {
  if (WriteWholeFile(FlagFile(session), "0\r\n")) return true;
  Log(session, "WaitForConversion - could not write " + FlagFile(session));
  return false;
}

// The converter calls a batch file holds.
int CountConverterCalls(const std::string& batch_path) {
  LineReader lines;
  if (!lines.Open(batch_path)) return 0;
  int calls = 0;
  std::string_view line;
  while (lines.Next(line)) calls += StartsWith(line, kConverterCall) ? 1 : 0;
  return calls;
}

// The converter appends one line per call to MSXlog.txt in the program folder, a failure as the
// date and time, then "Error: "; the lines it wrote after `offset` that report one.
int CountConverterFailures(const std::string& log_path, std::uintmax_t offset) {
  const std::optional<std::string> log = ReadWholeFile(log_path);
  if (!log || log->size() <= offset) return 0;
  int failures = 0;
  const std::string_view added = std::string_view(*log).substr(offset);
  for (std::size_t pos = 0; pos < added.size();) {
    const std::size_t end = std::min(added.find('\n', pos), added.size());
    const std::string_view line = added.substr(pos, end - pos);
    failures += line.find(" Error: ") == kStampLength - 1 ? 1 : 0;
    pos = end + 1;
  }
  return failures;
}

// What the converter writes into a MetaStock folder, and the empty file the emptying makes first.
bool IsMetaStockFile(std::string_view name) {
  if (EqualsIgnoreCase(name, "MASTER") || EqualsIgnoreCase(name, "EMASTER") ||
      EqualsIgnoreCase(name, "XMASTER") || EqualsIgnoreCase(name, "temp.txt") ||
      IsTemporaryFileName(name)) {
    return true;
  }
  // F<number>.DAT and F<number>.MWD
  if (name.size() < 6 || (name[0] != 'F' && name[0] != 'f')) return false;
  const std::size_t dot = name.find('.');
  if (dot == std::string_view::npos || dot < 2) return false;
  for (std::size_t i = 1; i < dot; ++i) {
    if (name[i] < '0' || name[i] > '9') return false;
  }
  const std::string_view extension = name.substr(dot);
  return EqualsIgnoreCase(extension, ".DAT") || EqualsIgnoreCase(extension, ".MWD");
}

// Complete.exe is the batch's last line, so the batch ends a moment after the mark is set. Until
// it has, it holds the run lock (see StartHiddenBatch): a run that ended first would leave the
// next run refused as busy, and the next batch would start beside this one.
void AwaitBatchEnd(Session& session, BatchProcess& batch) {
  const auto limit = std::chrono::steady_clock::now() + kBatchEndLimit;
  while (batch.Running()) {
    if (std::chrono::steady_clock::now() > limit) {
      Log(session, "WaitForConversion - the batch had not ended " +
                       std::to_string(kBatchEndLimit.count()) + " s after its completion mark");
      return;
    }
    std::this_thread::sleep_for(kBatchEndPoll);
  }
}

}  // namespace

const std::array<ConverterKind, 5>& ConverterKinds() {
  return kConverterKinds;
}

bool ConvertsToMetaStock(const WindowState& ui) {
  return ui.MakeMetaStockPxFiles != 0 && ui.DoNotMakeMetaStockFormat == 0;
}

void StartConverterBatches(Session& session) {
  for (const ConverterKind& kind : kConverterKinds) {
    const std::string path = session.ui.PathToLists + std::string(kind.batch_file);
    if (!WriteWholeFile(path, {})) Log(session, "DownLoadButton_Click - cannot empty " + path);
  }
}

bool AppendConverterCall(Session& session, const std::string& batch_file,
                         const std::string& price_file, const std::string& output_folder) {
  std::string line(kConverterCall);
  line += price_file;
  line += " -r fileReplace -o ";
  line += output_folder;
  if (AppendLine(batch_file, line)) return true;
  Log(session, "AppendConverterCall - cannot append to " + batch_file);
  return false;
}

std::string ConverterOutputFolder(const Session& session, std::size_t kind) {
  const ConverterKind& converter = kConverterKinds[kind];
  std::string folder = session.ui.PathToMSPxFiles;
  if (!converter.output_folder.empty()) folder += Folder(converter.output_folder);
  folder += session.run.DataPeriod;
  return folder;
}

bool ClearMetaStockFolders(Session& session, int list) {
  if (list < 6) return true;
  const int periods = list == 6 ? 1 : 4;
  for (int i = 0; i < periods; ++i) {
    const std::string folder = session.ui.PathToMSPxFiles + Folder(kPeriodNames[i]);
    const std::string off_limits = ProtectedFolderReason(folder, session.app.BaseDirectory);
    if (!off_limits.empty()) {
      Log(session, "DownLoadButton_Click - " + folder + " is " + off_limits + "; not emptied");
      return false;
    }
  }
  for (int i = 0; i < periods; ++i) {
    const std::string folder = session.ui.PathToMSPxFiles + Folder(kPeriodNames[i]);
    if (!DirectoryExists(folder)) continue;
    TouchFile(folder + "temp.txt");
    if (!DeleteFilesIn(folder, &IsMetaStockFile)) {
      Log(session, "DownLoadButton_Click - could not empty " + folder);
    }
  }
  return true;
}

bool WaitForConversion(Session& session, BatchProcess& batch, std::string& problem) {
  LogEntry(session, "WaitForConversion");
  for (;;) {
    if (ReadFlag(session) != 0) break;
    if (!batch.Running()) {
      // The batch may have set the flag just before it ended.
      if (ReadFlag(session) != 0) break;
      problem = "the batch ended without its completion mark (is Complete.exe missing?)";
      break;
    }
    if (StopRequested(session)) {
      problem = "the wait was cancelled";
      break;
    }
    Pause(session, 0.25);
    std::this_thread::sleep_for(kPollInterval);
  }
  if (problem.empty()) AwaitBatchEnd(session, batch);
  WriteFlagZero(session);
  if (!problem.empty()) Log(session, "WaitForConversion - " + problem);
  return problem.empty();
}

std::vector<ConversionOutcome> RunConverterBatches(Session& session) {
  WindowState& ui = session.ui;
  std::vector<ConversionOutcome> outcomes;
  if (ui.MakeMetaStockPxFiles == 0) return outcomes;
  Log(session, "Make MetaStock Price Files");
  WriteFlagZero(session);
  const std::string started = FormatClockAmPm(session.run.RunStartTime) + ")";
  const std::string converter_log = session.app.ProgramDirectory + "MSXlog.txt";
  const std::vector<std::string> environment{"CORVANET_PROGRAM_DIRECTORY=" +
                                             session.app.ProgramDirectory};
  for (std::size_t k = 0; k < kConverterKinds.size(); ++k) {
    const PriceFileKind& kind = PriceFileKinds()[k];
    if (ui.*kind.ticked == 0 || ui.DoNotMakeMetaStockFormat != 0) continue;
    const ConverterKind& converter = kConverterKinds[k];
    ui.DownLoadButton.caption = std::string(converter.start_text) + started;
    ui.Label13.caption = std::string(converter.progress_text);
    session.NotifyObserver();
    ConversionOutcome& outcome = outcomes.emplace_back();
    outcome.batch_file = std::string(converter.batch_file);
    const std::string batch_path = ui.PathToLists + outcome.batch_file;
    outcome.calls = CountConverterCalls(batch_path);
    const std::uintmax_t log_offset = FileSize(converter_log).value_or(0);
    if (!AppendLine(batch_path, kCompletionCall)) {
      outcome.problem = "cannot write " + batch_path;
      continue;
    }
    BatchProcess batch = session.shell.StartHidden(outcome.batch_file, ui.PathToLists, environment);
    if (!batch.started()) {
      outcome.problem = "the batch could not be started";
    } else {
      WaitForConversion(session, batch, outcome.problem);
    }
    outcome.failed = CountConverterFailures(converter_log, log_offset);
    if (!outcome.problem.empty()) {
      Log(session, "Make MetaStock Price Files - " + outcome.batch_file + ": " + outcome.problem);
    }
  }
  Log(session, "Make MetaStock Price Files - Complete!");
  return outcomes;
}

}  // namespace corvanet
