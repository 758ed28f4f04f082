#pragma once
// The one way a file comes from the data service.
#include <cstdint>
#include <string>
#include <string_view>

#include "core/platform/http.h"
#include "core/state/session.h"

namespace corvanet {

// PathToDataFiles + "Base/", where every fetched file lands first.
std::string BaseFolder(const Session& session);

// The request for DataSetURL + remote path, with the session's credentials, time limit, largest
// body and the authorities the user added (the setting CAFile, then CORVANET_CA_FILE).
FetchRequest ServiceRequest(const Session& session, std::string_view remote_path);
// The largest body a fetch keeps, from the setting MaxDownloadMB; 0 when the setting is no whole
// number of MiB from 1 on.
std::uint64_t MaxBodyBytes(const WindowState& ui);
// Where a fetched file named `local_name` is saved: in the Base folder.
std::string BaseFilePath(const Session& session, std::string_view local_name);

// Time-outs in a row after which a run takes the data service for gone and stops.
constexpr int kTimeOutsBeforeStopping = 3;

// Keeps the run's record of the service's answers: whether the last fetch may be tried again, and
// whether time-outs have come so often in a row that the run must stop.
void NoteHowTheServiceAnswered(RunState& run, const FetchResult& result);

// Fetches DataSetURL + remote path and, only when the whole body arrived with a 2xx status, saves
// it as the Base folder's `local_name` (a failed fetch leaves the old copy as it was). Counts the
// fetch in GetFileCount. A failure is logged with the remote path, never with credentials.
FetchResult RetrieveDataFile(Session& session, std::string_view remote_path,
                             std::string_view local_name);

// Replaces `destination` by a copy of `source` (through a temporary file, so a failed copy leaves
// the destination as it was). False, with a log line, on failure.
bool CopyFile(Session& session, const std::string& source, const std::string& destination);

}  // namespace corvanet
