#include "core/download/retrieve.h"

#include "core/app/log.h"
#include "core/download/fetch_ahead.h"
#include "core/platform/files.h"
#include "core/platform/paths.h"

namespace corvanet {

std::string BaseFolder(const Session& session) {
  return session.ui.PathToDataFiles + Folder("Base");
}

FetchResult RetrieveDataFile(Session& session, std::string_view remote_path,
                             std::string_view local_name) {
  // The fetch steps of a run log the period in hand as their lines' middle field.
  WriteLog(session, "RetrieveDataFile");
  if (session.run.GetFileCount < INT16_MAX) ++session.run.GetFileCount;
  FetchRequest request{ServiceUrl(session.app.DataSetURL, remote_path), session.ui.UserName,
                       session.ui.Password, session.http_timeout_seconds};
  std::string local_path = BaseFolder(session);
  // Names such as "\Zennor_System.txt" carry the service's separator.
  for (const char c : local_name) local_path += c == '\\' ? kSep : c;
  FetchResult result = session.fetch_ahead != nullptr
                           ? session.fetch_ahead->Fetch(request, local_path)
                           : session.http.FetchToFile(request, local_path);
  if (!result.ok()) {
    WriteLog(session, "RetrieveDataFile - " + std::string(remote_path) + " - " + result.Describe() +
                          " - nothing saved");
  }
  return result;
}

bool CopyFile(Session& session, const std::string& source, const std::string& destination) {
  WriteLog(session, "CopyFile - FileToCopy:  " + source + " CopyToDestination:  " + destination);
  if (CopyFileReplacing(source, destination)) return true;
  WriteLog(session, "CopyFile - could not copy " + source + " to " + destination);
  return false;
}

}  // namespace corvanet
