#include "support/test_session.h"

#include <algorithm>

#include <cstdlib>

#include "core/lists/masterfile.h"
#include "core/platform/files.h"
#include "core/platform/paths.h"
#include "core/state/log.h"
#include "support/child_process.h"

namespace corvanet::test {

TestSession::TestSession() {
  // Retries of failures that may pass start at once; the service's Retry-After still counts.
  SetEnvironmentDefault("CORVANET_RETRY_PAUSE_MS", "0");
  AppState& app = session.app;
  WindowState& ui = session.ui;
  app.BaseDirectory = dir.path();
  app.EditionDirectory = Folder("Rondex");
  app.ProgramDirectory = app.BaseDirectory + app.EditionDirectory;
  app.VersionText = "5.1";
  app.MasterFileName = "Masterfile2.csv";
  ui.PathToDataFiles = app.BaseDirectory + Folder("CSVFiles");
  ui.PathToLists = app.BaseDirectory + Folder("Lists");
  ui.PathToMSPxFiles = app.BaseDirectory + Folder("MetaStock");
  CreateFolders(app.ProgramDirectory);
  CreateFolders(ui.PathToLists);
  CreateFolders(ui.PathToMSPxFiles);
  for (const char* period : {"Base", "Daily", "Weekly", "Monthly", "Quarterly"}) {
    CreateFolders(ui.PathToDataFiles + period);
  }
  ui.UserName = "user";
  ui.Password = "secret";
  // Port 9 (discard) on loopback: a fetch fails at once instead of reaching out.
  ui.IPAddress = "127.0.0.1:9";
  app.DataSetURL = ui.IPAddress + "/ovalith/data/";
  session.http_timeout_seconds = 2;
}

namespace {

// `folder` + `name`, the name's '/' written as the program writes its separators.
std::string Joined(const std::string& folder, std::string_view name) {
  std::string path(name);
  std::replace(path.begin(), path.end(), '/', kSep);
  return folder + path;
}

}  // namespace

std::string TestSession::base(std::string_view name) const {
  return Joined(session.app.BaseDirectory, name);
}
std::string TestSession::lists(std::string_view name) const {
  return Joined(session.ui.PathToLists, name);
}
std::string TestSession::data(std::string_view name) const {
  return Joined(session.ui.PathToDataFiles, name);
}
std::string TestSession::masterfile() const {
  return MasterFilePath(session);
}

void TestSession::WriteMasterfile(const std::vector<std::string>& lines, bool load) {
  WriteLines(masterfile(), lines);
  if (load) LoadMasterfile(session);
}

void TestSession::WriteList(int n, const std::vector<std::string>& lines) {
  WriteLines(lists("Download" + std::to_string(n) + ".csv"), lines);
}

std::vector<std::string> TestSession::ReadList(int n) const {
  return ReadLines(lists("Download" + std::to_string(n) + ".csv"));
}

std::string TestSession::LogText() const {
  return ReadFile(LogFilePath(session));
}

}  // namespace corvanet::test
