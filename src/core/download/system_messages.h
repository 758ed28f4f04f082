#pragma once
// The service's message file, fetched at the end of a run and shown with (or instead of) the
// completion message.
#include <string>
#include <string_view>

#include "core/state/session.h"

namespace corvanet {

struct SystemMessage {
  std::string kind;     // "-1" none, "0" notice, "1" notice offering the web address, "" nothing
  std::string address;  // opened when the user answers Yes to a kind "1" message
  std::string text;     // message lines joined by carriage returns, up to "exit"
};

// "\Zennor_System.txt" (the leading separator is part of the remote path and the local name).
std::string GetSystemMessageFileName(Session& session);
// The same name, without the log line.
std::string SystemMessageFileName(const Session& session);
// Reads a message file; a missing or short file gives what it holds (an empty kind when none).
SystemMessage ReadSystemMessage(const std::string& path);
// How a run ended, as its completion message tells it.
struct RunEnding {
  std::string what = "completed";  // "completed", "finished with 2 failure(s)", "stopped"
  bool complete = true;            // false: a warning icon, and a title that says so
};

// Shows the messages as the two option pairs ask, at the end of a run. When this run could not
// fetch the message file (`fetched` false) the copy on disk is an old message: nothing of it is
// shown, and it stays on disk.
void RetrieveSystemMessages(Session& session, std::string_view elapsed, bool fetched = true,
                            const RunEnding& ending = {});

}  // namespace corvanet
