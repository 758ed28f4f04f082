#include "core/download/diagnostics.h"

#include "core/platform/files.h"
#include "core/platform/paths.h"
#include "core/platform/text.h"
#include "core/state/log.h"

namespace corvanet {

void DeleteDestinationFile(Session& session, const std::string& file_name) {
  WriteLog(session, "DeleteDestinationFile");
  const std::string path = session.ui.PathToDataFiles + Folder(session.run.DataPeriod) + file_name;
  if (FileExists(path) && !RemoveFile(path)) {
    WriteLog(session, "DeleteDestinationFile - could not delete " + path);
  }
}

void SetDownloadURLPath(Session& session) {
  WriteLog(session, "SetDownloadURLPath");
  const std::string address = TrimCopy(session.app.DataSetURL);
  session.shell.Notify(address);
  WriteLog(session, "DownloadURLPath = " + address);
}

}  // namespace corvanet
