#include "core/download/retrieve.h"

#include <algorithm>
#include <cstdlib>
#include <optional>

#include "core/download/early_fetches.h"
#include "core/download/fetch_ahead.h"
#include "core/platform/files.h"
#include "core/platform/paths.h"
#include "core/platform/text.h"
#include "core/state/log.h"

namespace corvanet {

std::string BaseFolder(const Session& session) {
  return session.ui.PathToDataFiles + Folder("Base");
}

void NoteHowTheServiceAnswered(RunState& run, const FetchResult& result) {
  run.last_fetch_transient = !result.ok() && result.transient();
  // A service that cannot prove who it is gets nothing more of this run, the password least.
  if (result.status == FetchStatus::kUntrustedCertificate) {
    run.service_unusable = result.Describe();
    return;
  }
  if (run.last_fetch_transient) {
    run.retry_after_seconds = std::max(run.retry_after_seconds, result.retry_after_seconds);
  }
  if (result.status != FetchStatus::kTimedOut) {
    run.time_outs_in_a_row = 0;
  } else if (++run.time_outs_in_a_row >= kTimeOutsBeforeStopping) {
    // Each further request would wait the whole time-out too: a silent service can hold a run
    // of a few hundred datafiles for hours.
    run.service_unusable = "the data service does not answer";
  }
}

std::uint64_t MaxBodyBytes(const WindowState& ui) {
  int mib = 0;
  if (!ParseInteger(ui.MaxDownloadMB, mib) || mib < 1) return 0;
  return static_cast<std::uint64_t>(mib) * kMiB;
}

FetchRequest ServiceRequest(const Session& session, std::string_view remote_path) {
  FetchRequest request;
  request.url = ServiceUrl(session.app.DataSetURL, remote_path);
  request.user = session.ui.UserName;
  request.password = session.ui.Password;
  request.timeout_seconds = session.http_timeout_seconds;
  // Both add to the system's authorities: one in the settings, one for a whole machine.
  if (const std::string file = TrimCopy(session.ui.CAFile); !file.empty()) {
    request.extra_authorities.push_back(file);
  }
  if (const char* file = std::getenv("CORVANET_CA_FILE"); file != nullptr && *file != '\0') {
    request.extra_authorities.emplace_back(file);
  }
  if (const std::uint64_t limit = MaxBodyBytes(session.ui); limit != 0) {
    request.max_body_bytes = limit;
  }
  return request;
}

std::string BaseFilePath(const Session& session, std::string_view local_name) {
  std::string path = BaseFolder(session);
  // Names such as "\Zennor_System.txt" carry the service's separator.
  for (const char c : local_name) path += c == '\\' ? kSep : c;
  return path;
}

FetchResult RetrieveDataFile(Session& session, std::string_view remote_path,
                             std::string_view local_name) {
  // The fetch steps of a run log the period in hand as their lines' middle field.
  WriteLog(session, "RetrieveDataFile");
  if (!session.run.service_unusable.empty()) {
    // Each request would only wait out its time-out, or go to a service that cannot prove who it
    // is: nothing more is asked of it.
    FetchResult not_asked;
    not_asked.detail = "not asked, " + session.run.service_unusable;
    return not_asked;
  }
  if (session.run.GetFileCount < INT16_MAX) ++session.run.GetFileCount;
  const FetchRequest request = ServiceRequest(session, remote_path);
  const std::string local_path = BaseFilePath(session, local_name);
  std::optional<FetchResult> early;
  if (session.early_fetches != nullptr) early = session.early_fetches->Take(request, local_path);
  FetchResult result = early.has_value() ? std::move(*early)
                       : session.fetch_ahead != nullptr
                           ? session.fetch_ahead->Fetch(request, local_path)
                           : session.http.FetchToFile(request, local_path);
  NoteHowTheServiceAnswered(session.run, result);
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
