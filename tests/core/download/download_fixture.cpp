#include "core/download/download_fixture.h"

#include <cstdio>

#include "core/download/datafile_names.h"
#include "core/lists/symbols.h"
#include "core/platform/files.h"

namespace corvanet::test {

DownloadFixture::DownloadFixture() {
  AppState& app = session.app;
  WindowState& ui = session.ui;
  app.BaseDirectory = dir.path();
  app.EditionDirectory = "Rondex/";
  app.ProgramDirectory = dir.path() + "Rondex/";
  ui.PathToDataFiles = dir.path() + "CSVFiles/";
  ui.PathToLists = dir.path() + "Lists/";
  for (const char* folder : {"Rondex", "CSVFiles/Base", "CSVFiles/Daily", "CSVFiles/Weekly",
                             "CSVFiles/Monthly", "CSVFiles/Quarterly", "Lists"}) {
    CreateFolders(dir.path() + folder);
  }
  ui.UserName = "user";
  ui.Password = "secret";
  ui.IPAddress = service.host_and_port();
  app.MasterFileName = "Masterfile2.csv";
  app.DataSetURL = ui.IPAddress + std::string(kServicePath);
  ui.VendoreSignal = true;
  ui.DailyInterval = 1;
  session.http_timeout_seconds = 5;
}

std::string DownloadFixture::Row(int day, std::string_view close) {
  char text[96];
  std::snprintf(text, sizeof text, "D,202401%02d,01/%02d/2024,100,101,99,%.*s", day, day,
                static_cast<int>(close.size()), close.data());
  return text;
}

std::string DownloadFixture::Header() {
  return "Per,Date,DateText,Open,High,Low,Close";
}

std::string DownloadFixture::Datafile(const std::vector<int>& days) {
  std::string content = Header() + "\r\n";
  for (const int day : days) content += Row(day) + "\r\n";
  return content;
}

std::string DownloadFixture::UpdateLine(std::string_view symbol, std::string_view row) {
  std::string line(symbol);
  line.resize(15, ' ');
  line += ' ';
  line += row;
  return line;
}

std::string DownloadFixture::base(std::string_view name) const {
  return session.ui.PathToDataFiles + "Base/" + std::string(name);
}

std::string DownloadFixture::daily(std::string_view name) const {
  return session.ui.PathToDataFiles + "Daily/" + std::string(name);
}

void DownloadFixture::WriteUpdateFile(const std::vector<std::string>& lines,
                                      std::string_view period) {
  WriteLines(base("Update-" + std::string(period) + ".csv"), lines);
}

void DownloadFixture::SelectDatafile(std::string_view listed_symbol, std::string_view period) {
  session.run.DataPeriod = std::string(period);
  session.run.DownloadSymbol = std::string(listed_symbol);
  session.run.GetFileCount = 0;
  WebSymbolCorrection(session, listed_symbol);
  SetDatafileNames(session);
}

}  // namespace corvanet::test
