#include "core/download/system_messages.h"

#include "core/download/retrieve.h"
#include "core/lists/download_lists.h"
#include "core/platform/clock.h"
#include "core/platform/line_reader.h"
#include "core/platform/paths.h"
#include "core/platform/text.h"
#include "core/state/log.h"
#include "core/ui/outside_programs.h"

namespace corvanet {

namespace {

void ReplaceAll(std::string& text, std::string_view from, std::string_view to) {
  for (std::size_t pos = text.find(from); pos != std::string::npos;
       pos = text.find(from, pos + to.size())) {
    text.replace(pos, from.size(), to);
  }
}

}  // namespace

std::string SystemMessageFileName(const Session& session) {
  return session.app.EditionDirectory == Folder("Rondex") ? "\\Zennor_System.txt"
                                                          : "\\Quaddle_System.txt";
}

std::string GetSystemMessageFileName(Session& session) {
  LogEntry(session, "GetSystemMessageFileName");
  return SystemMessageFileName(session);
}

SystemMessage ReadSystemMessage(const std::string& path) {
  SystemMessage message;
  LineReader lines;
  if (!lines.Open(path)) return message;
  std::string_view line;
  if (lines.Next(line)) message.kind = TrimCopy(line);
  if (lines.Next(line)) message.address = TrimCopy(line);
  bool first = true;
  while (lines.Next(line)) {
    const std::string_view text = Trim(line);
    if (text == "exit") break;
    if (!first) message.text += '\r';
    message.text += text;
    first = false;
  }
  // A message written for the previous major version names this one.
  ReplaceAll(message.text, "Corvanet 4", "Corvanet 5");
  return message;
}

void RetrieveSystemMessages(Session& session, std::string_view elapsed, bool fetched,
                            const RunEnding& ending) {
  Log(session, "Retrieve system messages");
  SystemMessage message;
  if (!fetched) Log(session, "Retrieve system messages - not fetched this run; nothing shown");
  if (session.ui.SystemMessagesYes && fetched) {
    // The name's leading separator stands for the Base folder's own.
    message = ReadSystemMessage(BaseFolder(session) + GetSystemMessageFileName(session).substr(1));
    if (message.kind.empty() && message.address.empty()) {
      Log(session, "Retrieve system messages - no message file or an empty one");
    }
    message.text += " \r";
    if (message.kind == "-1") message = {};
  }
  const bool kind_one = message.kind == "1";
  if (session.ui.DownloadCompleteMessageYes) {
    const LocalDateTime now = session.clock.Now();
    std::string text = message.text + "Update for " + DownLoadType(session) + " " + ending.what +
                       " on " + FormatShortDate(now) + " at " + FormatTimeOfDay(now) +
                       "\rElapsed Time = " + std::string(elapsed);
    if (!kind_one) {
      session.shell.MessageBox(
          text, ending.complete ? "Corvanet Download Complete" : "Corvanet Download Not Complete",
          Buttons::kOk, ending.complete ? Icon::kInformation : Icon::kExclamation);
    } else {
      text += "\r\rDo you want to go to the web site now?\r";
      if (session.shell.MessageBox(text, "Corvanet System Message", Buttons::kYesNo,
                                   Icon::kExclamation) == Answer::kYes) {
        GoToURL(session, message.address);
      }
    }
  } else if (message.kind == "0") {
    session.shell.MessageBox(message.text, kDefaultTitle, Buttons::kOk, Icon::kNone);
  } else if (kind_one) {
    if (session.shell.MessageBox(message.text, kDefaultTitle, Buttons::kYesNo, Icon::kNone) ==
        Answer::kYes) {
      GoToURL(session, message.address);
    }
  }
  Log(session, "Retrieve system messages - Complete!");
}

}  // namespace corvanet
