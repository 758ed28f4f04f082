#include "core/download/refresh_masterfile.h"

#include <algorithm>
#include <vector>

#include "core/download/check_lists.h"
#include "core/download/retrieve.h"
#include "core/lists/masterfile.h"
#include "core/platform/field_reader.h"
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

bool RefreshMasterfile(Session& session, FetchResult* answer) {
  LogEntry(session, "RefreshMasterfile");
  if (session.ui.UserName == "Enter username here") return false;
  const std::string name = session.app.MasterFileName;
  const FetchResult result = RetrieveDataFile(session, name, name);
  if (answer != nullptr) *answer = result;
  if (!result.ok()) return false;
  const std::string fetched = BaseFolder(session) + name;
  std::string problem;
  if (!IsValidMasterfile(fetched, problem)) {
    Log(session, "RefreshMasterfile - the fetched " + name + " " + problem +
                     "; the old master file is kept");
    return false;
  }
  const std::string installed = MasterFilePath(session);
  if (!CopyFile(session, fetched, installed)) return false;
  CheckLists(session, session.ui.PathToLists, installed);
  return true;
}

}  // namespace corvanet
