#include "core/download/refresh_masterfile.h"

#include <algorithm>

#include "core/app/log.h"
#include "core/download/retrieve.h"
#include "core/lists/check_lists.h"
#include "core/lists/masterfile.h"
#include "core/platform/line_reader.h"

namespace corvanet {

namespace {

// Every line holds exactly one comma, and there is at least one line.
bool IsValidMasterfile(const std::string& path, std::string& problem) {
  LineReader lines;
  if (!lines.Open(path)) {
    problem = "cannot be read";
    return false;
  }
  std::string_view line;
  int number = 0;
  while (lines.Next(line)) {
    ++number;
    if (std::count(line.begin(), line.end(), ',') != 1) {
      problem = "line " + std::to_string(number) + " does not hold exactly one comma";
      return false;
    }
  }
  if (number == 0) {
    problem = "is empty";
    return false;
  }
  return true;
}

}  // namespace

bool RefreshMasterfile(Session& session) {
  LogEntry(session, "RefreshMasterfile");
  if (session.ui.UserName == "Enter username here") return false;
  const std::string name = session.app.MasterFileName;
  if (!RetrieveDataFile(session, name, name).ok()) return false;
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
