#include "core/lists/check_lists.h"

#include "core/app/log.h"

namespace corvanet {

void CheckLists(Session& session, const std::string& /*lists_folder*/,
                const std::string& /*masterfile_path*/) {
  LogEntry(session, "CheckLists");
}

}  // namespace corvanet
