#pragma once
// A Session in a fresh temporary installation: the folders a new installation has, credentials
// set (so settings saves go through without a message), no data service reachable, a fixed clock
// and a shell that records its message boxes.
#include <string>
#include <string_view>
#include <vector>

#include "core/platform/clock.h"
#include "core/platform/http.h"
#include "core/state/session.h"
#include "support/recording_shell.h"
#include "support/test_support.h"

namespace corvanet::test {

struct TestSession {
  TestSession();
  TestSession(const TestSession&) = delete;
  TestSession& operator=(const TestSession&) = delete;

  // Paths in the installation: the base folder, the lists folder and the data folder.
  std::string base(std::string_view name = {}) const;
  std::string lists(std::string_view name = {}) const;
  std::string data(std::string_view name = {}) const;
  std::string masterfile() const;  // BaseDirectory + MasterFileName

  // Writes the master file (CR LF lines) and, when `load`, reloads the master list box from it.
  void WriteMasterfile(const std::vector<std::string>& lines, bool load = true);
  // Writes list file n (CR LF lines) as the user's last save would have left it.
  void WriteList(int n, const std::vector<std::string>& lines);
  std::vector<std::string> ReadList(int n) const;

  // Ticks GenerateLogFile; LogText() then holds every line written since.
  void EnableLog() { session.ui.GenerateLogFile = 1; }
  std::string LogText() const;

  TempDir dir;
  ScriptedShell shell;
  SystemHttpClient http;  // nothing listens where the session points it
  ManualClock clock;
  Session session{shell, http, clock};
};

}  // namespace corvanet::test
