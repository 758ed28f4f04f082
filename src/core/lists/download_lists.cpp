#include "core/lists/download_lists.h"

#include "core/app/log.h"
#include "core/lists/masterfile.h"
#include "core/platform/text.h"

namespace corvanet {

int CurrentListNumber(const Session& session) {
  return static_cast<int>(LeadingNumber(session.app.CurrentListNumber));
}

std::string DownLoadType(const Session& session) {
  const int n = CurrentListNumber(session);
  if (n == 6) return "'All Daily' Periods";
  if (n == 7) return "'All Periods'";
  return "Download List " + std::to_string(n);
}

std::string DownloadListPath(const Session& session, int list_number) {
  return session.ui.PathToLists + "Download" + std::to_string(list_number) + ".csv";
}

void DownloadList_Click(Session& session, int list_number) {
  LogEntry(session, "DownloadList" + std::to_string(list_number) + "_Click");
  session.app.CurrentListNumber = std::to_string(list_number);
}

void LoadDownloadFile_Click(Session& session) { LogEntry(session, "LoadDownloadFile_Click"); }

void SaveDownloadList_Click(Session& session) { LogEntry(session, "SaveDownloadList_Click"); }

bool OpenDownloadList(Session& session, FieldReader& reader) {
  LogEntry(session, "OpenDownloadList");
  return reader.Open(MasterFilePath(session));
}

}  // namespace corvanet
