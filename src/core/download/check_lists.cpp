#include "core/download/check_lists.h"

#include <algorithm>
#include <filesystem>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "core/download/retrieve.h"
#include "core/lists/download_lists.h"
#include "core/lists/symbols.h"
#include "core/platform/field_reader.h"
#include "core/platform/files.h"
#include "core/platform/paths.h"
#include "core/state/log.h"

namespace corvanet {

namespace {

using SymbolSet = std::unordered_set<std::string>;

constexpr int kHeaderRecords = 5;

// The symbols of the master file. Read once: the file does not change during the check, so this
// gives the answer of reading it again for every issue. Empty when it cannot be read.
bool ReadMasterSymbols(Session& session, const std::string& path, SymbolSet& symbols) {
  FieldReader reader;
  if (!reader.Open(path)) {
    Log(session, "CheckLists - cannot read the master file " + path);
    return false;
  }
  std::string name;
  std::string symbol;
  while (!reader.AtEnd()) {
    if (!reader.ReadRecord(name, symbol)) {
      Log(session, "CheckLists - the last record of " + path + " has no symbol: " + name);
      break;
    }
    symbols.insert(symbol);
  }
  if (reader.failed()) {
    Log(session, "CheckLists - read error in " + path);
    return false;
  }
  return true;
}

// A field as the reader will take it back: quoted when it holds a comma.
void AppendField(std::string& line, const std::string& field) {
  if (field.find(',') == std::string::npos) {
    line += field;
  } else {
    line.append("\"").append(field).append("\"");
  }
}

void WriteRecord(AtomicFileWriter& writer, std::string& line, const std::string& first,
                 const std::string& second) {
  line.clear();
  AppendField(line, first);
  line += ',';
  AppendField(line, second);
  writer.WriteLine(line);
}

constexpr std::size_t kCopiesKept = 10;

// Removes all but the newest kCopiesKept copies of list n. Their names sort by their time once
// ".csv" is taken off ("...-181502" before "...-181502-2").
void PruneListCopies(const std::string& folder, int n) {
  namespace fs = std::filesystem;
  const std::string prefix = "Download" + std::to_string(n) + "-";
  std::vector<std::string> stems;
  std::error_code ec;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder, ec)) {
    const std::string name = entry.path().filename().string();
    if (name.starts_with(prefix) && name.ends_with(".csv") && entry.is_regular_file(ec)) {
      stems.push_back(name.substr(0, name.size() - 4));
    }
  }
  if (stems.size() <= kCopiesKept) return;
  std::sort(stems.begin(), stems.end());
  for (std::size_t i = 0; i + kCopiesKept < stems.size(); ++i) {
    RemoveFile(folder + stems[i] + ".csv");
  }
}

// Copies list n as it stands into the folder of list copies under a name of its own, dated, that
// no later copy takes; the newest ten copies of each list are kept. The copy's path, or "" when
// it could not be made.
std::string KeepListCopy(Session& session, const std::string& lists_folder, int n,
                         const std::string& list_path) {
  const std::string folder = lists_folder + Folder(kListCopiesFolder);
  if (!DirectoryExists(folder) && !CreateFolders(folder)) {
    Log(session, "CheckLists - the folder " + folder + " could not be made");
    return {};
  }
  const std::string stem =
      folder + "Download" + std::to_string(n) + "-" + FormatFileStamp(session.clock.Now());
  std::string copy = stem + ".csv";
  for (int i = 2; FileExists(copy); ++i) copy = stem + "-" + std::to_string(i) + ".csv";
  if (!CopyFile(session, list_path, copy)) return {};
  PruneListCopies(folder, n);
  return copy;
}

std::string ReportedForm(const Session& session, std::string symbol) {
  // The vendor chosen in the window now, not the vendor line of the list being checked.
  if (session.ui.VendorReuters) symbol = ReutersForm(symbol);
  if (session.ui.VendorYahoo) symbol = YahooForm(symbol);
  return symbol;
}

// Rewrites one list through Temp.csv without the symbols the master file lacks, then copies it onto
// the list file. Adds a report line per removed symbol only once the list file was replaced; a list
// that cannot be read or rewritten is left as it stood.
bool CheckOneList(Session& session, const std::string& lists_folder, int n, const SymbolSet& master,
                  std::string& report) {
  const std::string list_path = lists_folder + "Download" + std::to_string(n) + ".csv";
  const std::string temp_path = lists_folder + "Temp.csv";
  FieldReader reader;
  if (!reader.Open(list_path)) {
    Log(session, "CheckLists - " + list_path + " cannot be read; skipped");
    return false;
  }
  AtomicFileWriter temp(temp_path);
  std::string first;
  std::string second;
  std::string line;
  for (int i = 0; i < kHeaderRecords; ++i) {
    if (!reader.ReadRecord(first, second)) {
      Log(session, "CheckLists - " + list_path + " ends within its header; skipped");
      return false;
    }
    WriteRecord(temp, line, first, second);
  }
  std::string removed;
  const std::string prefix = "Download List " + std::to_string(n) + " - Symbol:  ";
  int kept_count = 0;
  int removed_count = 0;
  while (!reader.AtEnd()) {
    if (!reader.ReadRecord(first, second)) {
      Log(session, "CheckLists - the last record of " + list_path + " has no symbol; skipped");
      return false;
    }
    if (master.count(second) != 0) {
      WriteRecord(temp, line, first, second);
      ++kept_count;
    } else {
      removed.append(prefix).append(ReportedForm(session, second)).append("\r");
      ++removed_count;
    }
  }
  if (reader.failed()) {
    Log(session, "CheckLists - read error in " + list_path + "; skipped");
    return false;
  }
  reader.Close();
  if (!temp.Commit()) {
    Log(session, "CheckLists - could not write " + temp_path + ": " + temp.error());
    return false;
  }
  // A master file can be wrong where the list is right: the list as it was is kept first, so the
  // user can have it back. Without a copy nothing is removed.
  if (removed_count > 0) {
    const std::string copy = KeepListCopy(session, lists_folder, n, list_path);
    if (copy.empty()) {
      Log(session, "CheckLists - no copy of " + list_path + " could be kept; it is left as it was");
      return false;
    }
    removed += "Download List " + std::to_string(n) + " as it was is kept in " + copy + "\r";
    Log(session, "CheckLists - " + list_path + " loses " + std::to_string(removed_count) + " of " +
                     std::to_string(removed_count + kept_count) + " symbols; a copy is kept in " +
                     copy);
  }
  // Temp.csv stays behind on purpose: the next list overwrites it.
  if (!CopyFile(session, temp_path, list_path)) return false;
  report += removed;
  return !removed.empty();
}

}  // namespace

void CheckLists(Session& session, const std::string& lists_folder,
                const std::string& masterfile_path) {
  LogEntry(session, "CheckLists");
  SymbolSet master;
  if (!ReadMasterSymbols(session, masterfile_path, master)) return;
  if (master.empty()) {
    // Checking against an empty master file would empty every list.
    Log(session, "CheckLists - " + masterfile_path + " holds no symbol; the lists are left alone");
    return;
  }
  std::string report =
      "Due to an update in Tessaly's Compilation List\r"
      "the following symbols have been removed from your\r"
      "download lists:\r";
  bool removed = false;
  bool shown_list_changed = false;
  // Only the box of a list that holds what its file held may be read again: edits not yet saved
  // are the user's, and stay.
  const int shown = DownloadListUnsaved(session) ? 0 : CurrentListNumber(session);
  for (int n = 1; n <= 5; ++n) {
    if (!CheckOneList(session, lists_folder, n, master, report)) continue;
    removed = true;
    if (n == shown && lists_folder == session.ui.PathToLists) shown_list_changed = true;
  }
  // The box shows the list as it now is, not the symbols just removed from it.
  if (shown_list_changed) LoadDownloadFile_Click(session);
  if (removed) {
    session.shell.MessageBox(report, "Corvanet Download Lists", Buttons::kOk, Icon::kExclamation);
  }
}

}  // namespace corvanet
