#pragma once
// The support log, LogFile.txt in the program folder: one line per call while GenerateLogFile is
// ticked (time, " - ", LogDetail, " - ", message), and a settings report that starts it afresh.
#include <string>
#include <string_view>

#include "core/state/session.h"

namespace corvanet {

// Appends one line when logging is on: time, " - ", LogDetail, " - ", message. The file is opened
// and closed per line, so a crash loses nothing already logged. Created readable by its owner
// only: the report holds the password.
void WriteLog(Session& session, std::string_view message);
// The same whatever the box says, for the few lines that are always written.
void WriteLogAlways(Session& session, std::string_view message);

// Appends one whole line (time and LogDetail included) to the log, or to the session's held lines
// while it holds lines back.
void AppendLogLine(Session& session, std::string line);

// The entry line every procedure writes: its own name, when logging is on.
inline void LogEntry(Session& session, std::string_view procedure) {
  WriteLog(session, procedure);
}
// A line at a notable event or in an error trap, when logging is on.
inline void Log(Session& session, std::string_view message) {
  WriteLog(session, message);
}

// Starts LogFile.txt afresh with the 16-line report of the main settings.
void WriteSettingsReport(Session& session);
// The box was clicked (ticked or unticked): a fresh report either way.
void GenerateLogFile_Click(Session& session);

std::string LogFilePath(const Session& session);

}  // namespace corvanet
