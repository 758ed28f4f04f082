#include "core/download/download_run.h"

#include "core/app/log.h"

namespace corvanet {

RunSummary DownLoadButton_Click(Session& session) {
  LogEntry(session, "DownLoadButton_Click");
  return {};
}

}  // namespace corvanet
