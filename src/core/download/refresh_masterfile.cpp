#include "core/download/refresh_masterfile.h"

#include <algorithm>
#include <optional>
#include <unordered_set>
#include <utility>
#include <vector>

#include "core/download/check_lists.h"
#include "core/download/retrieve.h"
#include "core/lists/masterfile.h"
#include "core/platform/field_reader.h"
#include "core/platform/files.h"
#include "core/platform/line_reader.h"
#include "core/state/log.h"

namespace corvanet {

constexpr std::size_t kLongestIssueName = 256;
constexpr std::size_t kLongestSymbol = 64;

// Every line holds exactly one comma, and the field reader takes from each exactly one record of
// two fields with a symbol: a stray quote would otherwise shift every later record, and the list
// check would then remove symbols the service still has. There is at least one line.
bool IsValidMasterfile(const std::string& path, std::string& problem) {
  LineReader lines;
  if (!lines.Open(path)) {
    problem = "cannot be read";
    return false;
  }
  std::string_view line;
  std::vector<std::string> fields;
  int number = 0;
  while (lines.Next(line)) {
    ++number;
    const std::string where = "line " + std::to_string(number);
    if (std::count(line.begin(), line.end(), ',') != 1) {
      problem = where + " does not hold exactly one comma";
      return false;
    }
    fields.clear();
    SplitFields(line, fields);
    if (fields.size() != 2) {
      problem = where + " does not read as a name and a symbol (a stray quote?)";
      return false;
    }
    if (fields[1].empty()) {
      problem = where + " has no symbol";
      return false;
    }
    // Far beyond any real name or symbol: such a line is not a master file's.
    if (fields[0].size() > kLongestIssueName || fields[1].size() > kLongestSymbol) {
      problem = where + " holds a name or symbol too long to be one";
      return false;
    }
  }
  if (lines.failed()) {
    problem = lines.line_too_long() ? "has a line longer than any master file's"
                                    : "cannot be read to its end";
    return false;
  }
  if (number == 0) {
    problem = "is empty";
    return false;
  }
  return true;
}

namespace {

// The symbols of a master file; empty when it cannot be read.
std::unordered_set<std::string> SymbolsOf(const std::string& path) {
  std::unordered_set<std::string> symbols;
  LineReader lines;
  if (!lines.Open(path)) return symbols;
  std::string_view line;
  std::vector<std::string> fields;
  while (lines.Next(line)) {
    fields.clear();
    SplitFields(line, fields);
    if (fields.size() == 2 && !fields[1].empty()) symbols.insert(fields[1]);
  }
  return symbols;
}

// How many symbols of the installed master file the fetched one lacks, and of how many.
std::pair<std::size_t, std::size_t> RemovedSymbols(const std::string& installed,
                                                   const std::string& fetched) {
  const std::unordered_set<std::string> old_symbols = SymbolsOf(installed);
  const std::unordered_set<std::string> new_symbols = SymbolsOf(fetched);
  std::size_t removed = 0;
  for (const std::string& symbol : old_symbols) removed += new_symbols.count(symbol) == 0;
  return {removed, old_symbols.size()};
}

bool SameBytes(const std::string& a, const std::string& b) {
  const std::optional<std::string> first = ReadWholeFile(a);
  const std::optional<std::string> second = ReadWholeFile(b);
  return first && second && *first == *second;
}

}  // namespace

MasterfileRefresh RefreshMasterfile(Session& session, std::string* message, FetchResult* answer) {
  LogEntry(session, "RefreshMasterfile");
  if (session.ui.UserName == "Enter username here") return MasterfileRefresh::kKept;
  const std::string name = session.app.MasterFileName;
  const FetchResult result = RetrieveDataFile(session, name, name);
  if (answer != nullptr) *answer = result;
  if (!result.ok()) return MasterfileRefresh::kKept;
  const std::string fetched = BaseFolder(session) + name;
  std::string problem;
  if (!IsValidMasterfile(fetched, problem)) {
    Log(session, "RefreshMasterfile - the fetched " + name + " " + problem +
                     "; the old master file is kept");
    return MasterfileRefresh::kKept;
  }
  const std::string installed = MasterFilePath(session);
  // A file served cut short at a line boundary reads as a valid one that lacks its tail; the
  // list check would prune every list by it. Two fetches that agree are the service's word.
  const std::string held = fetched + ".held";
  const auto [removed, of] = RemovedSymbols(installed, fetched);
  if (removed * 10 > of && !SameBytes(fetched, held)) {
    const std::string why = "The new " + name + " would remove " + std::to_string(removed) +
                            " of the " + std::to_string(of) +
                            " symbols of the installed one; it is held back in " + held +
                            " and installed only when the next fetch gives the same file.";
    Log(session, "RefreshMasterfile - " + why);
    if (message != nullptr) *message = why;
    if (!CopyFile(session, fetched, held)) {
      Log(session, "RefreshMasterfile - " + held + " could not be written");
    }
    return MasterfileRefresh::kHeldBack;
  }
  if (!CopyFile(session, fetched, installed)) return MasterfileRefresh::kKept;
  RemoveFile(held);
  CheckLists(session, session.ui.PathToLists, installed);
  return MasterfileRefresh::kInstalled;
}

}  // namespace corvanet
