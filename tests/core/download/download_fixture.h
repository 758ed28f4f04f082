#pragma once
// A session in a temporary installation whose data service is a StubService, for the engine tests.
#include <string>
#include <string_view>
#include <vector>

#include "core/platform/clock.h"
#include "core/platform/http.h"
#include "core/state/session.h"
#include "support/recording_shell.h"
#include "support/stub_service.h"
#include "support/test_support.h"

namespace corvanet::test {

class DownloadFixture {
 public:
  DownloadFixture();

  // "D,20240102,01/02/2024,100,101,99,100.5": a row of six fields for day `day` of 2024.
  static std::string Row(int day, std::string_view close = "100.5");
  static std::string Header();
  // A datafile: the header and the rows of the given days.
  static std::string Datafile(const std::vector<int>& days);
  // One update-file line: the symbol padded to 15 characters, a separator, the row.
  static std::string UpdateLine(std::string_view symbol, std::string_view row);

  std::string base(std::string_view name) const;
  std::string daily(std::string_view name) const;
  void WriteUpdateFile(const std::vector<std::string>& lines, std::string_view period = "Daily");
  // Points the run state at one listed symbol in the Daily period (eSignal names).
  void SelectDatafile(std::string_view listed_symbol, std::string_view period = "Daily");

  TempDir dir;
  StubService service;
  ScriptedShell shell;
  SystemHttpClient http;
  ManualClock clock;
  Session session{shell, http, clock};
  static constexpr std::string_view kServicePath = "/ovalith/data/";
};

}  // namespace corvanet::test
