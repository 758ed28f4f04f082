#include "core/pricefiles/conversion.h"

#include <chrono>
#include <map>
#include <optional>
#include <thread>
#include <utility>

#include "core/download/datafile_names.h"
#include "core/platform/files.h"
#include "core/platform/paths.h"
#include "core/platform/text.h"
#include "core/pricefiles/price_files.h"
#include "core/state/log.h"
#include "pxfiles/read_back.h"

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
// The calls a summary names one by one when they were not converted; the rest are counted.
constexpr std::size_t kNamedCalls = 10;

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

// Judges a kind's calls by what its folders hold now: a call counts as converted when its security
// is listed with the price file's number of bars. Each folder's index is read once.
void CheckConvertedCalls(Session& session, const std::vector<ConverterCall>& calls,
                         ConversionOutcome& outcome) {
  std::map<std::string, std::pair<pxfiles::FolderReadBack, std::string>> folders;
  for (const ConverterCall& call : calls) {
    auto [entry, added] = folders.try_emplace(call.output_folder);
    auto& [folder, damage] = entry->second;
    if (added && !folder.Load(call.output_folder, damage) && damage.empty()) damage = "unreadable";
    std::string problem = damage;
    if (problem.empty()) {
      const std::optional<std::size_t> bars = folder.Bars(call.symbol, problem);
      if (bars && *bars != call.bars) {
        problem = "holds " + std::to_string(*bars) + " of its " + std::to_string(call.bars) +
                  " bars in " + call.output_folder;
      } else if (bars) {
        continue;
      }
    }
    ++outcome.failed;
    const std::string line = call.datafile + ": " + problem;
    Log(session, "Make MetaStock Price Files - not converted: " + line);
    if (outcome.not_converted.size() < kNamedCalls) outcome.not_converted.push_back(line);
  }
  const auto unnamed = static_cast<std::size_t>(outcome.failed) - outcome.not_converted.size();
  if (unnamed > 0) outcome.not_converted.push_back("... and " + std::to_string(unnamed) + " more");
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
  line += QuoteBatchArgument(price_file);
  line += " -r fileReplace -o ";
  line += QuoteBatchArgument(output_folder);
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

std::string CheckConverter(Session& session) {
  std::string problem = session.shell.ConverterProblem();
  if (!problem.empty()) Log(session, "Make MetaStock Price Files - " + problem);
  return problem;
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

std::vector<ConversionOutcome> RunConverterBatches(Session& session,
                                                   const ConversionLedger& ledger) {
  WindowState& ui = session.ui;
  std::vector<ConversionOutcome> outcomes;
  if (ui.MakeMetaStockPxFiles == 0) return outcomes;
  Log(session, "Make MetaStock Price Files");
  WriteFlagZero(session);
  const std::string started = FormatClockAmPm(session.run.RunStartTime) + ")";
  const std::vector<std::string> environment{"CORVANET_PROGRAM_DIRECTORY=" +
                                             session.app.ProgramDirectory};
  for (std::size_t k = 0; k < kConverterKinds.size(); ++k) {
    const PriceFileKind& kind = PriceFileKinds()[k];
    if (ui.*kind.ticked == 0 || ui.DoNotMakeMetaStockFormat != 0) continue;
    const ConverterKind& converter = kConverterKinds[k];
    const std::vector<ConverterCall>& calls = ledger.kinds[k].calls;
    ConversionOutcome& outcome = outcomes.emplace_back();
    outcome.batch_file = std::string(converter.batch_file);
    outcome.calls = static_cast<int>(calls.size());
    outcome.no_bars = ledger.kinds[k].no_bars;
    // A batch started after Stop would only be given up on at once and left running unseen.
    if (StopRequested(session)) {
      outcome.failed = outcome.calls;
      outcome.problem = "not run: the run was stopped";
      continue;
    }
    ui.DownLoadButton.caption = std::string(converter.start_text) + started;
    ui.Label13.caption = std::string(converter.progress_text);
    session.NotifyObserver();
    const std::string batch_path = ui.PathToLists + outcome.batch_file;
    if (!AppendLine(batch_path, kCompletionCall)) {
      outcome.problem = "cannot write " + batch_path;
    } else if (BatchProcess batch =
                   session.shell.StartHidden(outcome.batch_file, ui.PathToLists, environment);
               !batch.started()) {
      outcome.problem = "the batch could not be started";
    } else {
      WaitForConversion(session, batch, outcome.problem);
    }
    CheckConvertedCalls(session, calls, outcome);
    if (!outcome.problem.empty()) {
      Log(session, "Make MetaStock Price Files - " + outcome.batch_file + ": " + outcome.problem);
    }
  }
  Log(session, "Make MetaStock Price Files - Complete!");
  return outcomes;
}

}  // namespace corvanet
