#include "core/state/log.h"

#include <string>
#include <utility>

#include "core/platform/files.h"

namespace corvanet {

std::string LogFilePath(const Session& session) {
  return session.app.ProgramDirectory + "LogFile.txt";
}

void WriteLogAlways(Session& session, std::string_view message) {
  std::string line = FormatTimeOfDay(session.clock.Now());
  line += " - ";
  line += session.app.LogDetail;
  line += " - ";
  // A symbol or a file name from outside must not be able to forge log lines, nor make the log
  // grow by more than a line's worth for each thing it reports.
  constexpr std::size_t kLongest = 2048;
  for (const char c : message.substr(0, kLongest)) {
    line += static_cast<unsigned char>(c) < 0x20 ? '?' : c;
  }
  if (message.size() > kLongest) line += " ...";
  AppendLogLine(session, std::move(line));
}

void AppendLogLine(Session& session, std::string line) {
  if (session.held_log_lines != nullptr) {
    session.held_log_lines->push_back(std::move(line));
    return;
  }
  // Nothing is written before start-up knows the program folder: the folder the program was
  // started from belongs to the user.
  if (session.app.ProgramDirectory.empty()) return;
  AppendLine(LogFilePath(session), line, FileAccess::kOwnerOnly);
}

void WriteLog(Session& session, std::string_view message) {
  if (!session.logging()) return;
  WriteLogAlways(session, message);
}

void WriteSettingsReport(Session& session) {
  const WindowState& ui = session.ui;
  std::string report;
  const auto line = [&report](std::string_view label, std::string_view value) {
    report += label;
    report += value;
    report += "\r\n";
  };
  const auto option = [](bool value) { return value ? "True" : "False"; };
  line(FormatShortDate(session.clock.Now()), "");
  line("", "");
  line("ProgramDirectory:  ", session.app.ProgramDirectory);
  line("PathToDataFiles.Text:  :", ui.PathToDataFiles);
  line("PathToLists.Text:  ", ui.PathToLists);
  line("ImplementSpecialFunctions.Value:  ", CheckText(ui.ImplementSpecialFunctions));
  line("MakeMetaStockPxFiles.Value:  ", CheckText(ui.MakeMetaStockPxFiles));
  line("PathToMSPxFiles.Text:  ", ui.PathToMSPxFiles);
  line("UserName.Text:  ", ui.UserName);
  line("Password.Text:  ", ui.Password);
  line("RetryNumber.Text:  ", ui.RetryNumber);
  line("DownloadCompleteMessageYes.Value:  ", option(ui.DownloadCompleteMessageYes));
  line("DownloadCompleteMessageNo.Value:  ", option(ui.DownloadCompleteMessageNo));
  line("SystemMessagesYes.Value:  ", option(ui.SystemMessagesYes));
  line("SystemMessagesNo.Value:  ", option(ui.SystemMessagesNo));
  line("", "");
  if (session.app.ProgramDirectory.empty()) return;
  WriteWholeFile(LogFilePath(session), report, FileAccess::kOwnerOnly);
}

void GenerateLogFile_Click(Session& session) {
  WriteSettingsReport(session);
}

}  // namespace corvanet
