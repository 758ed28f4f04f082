#pragma once
#include <string>

#include "core/platform/http.h"
#include "core/state/session.h"

namespace corvanet {

enum class MasterfileRefresh {
  kInstalled,  // a new master file is installed and the lists were checked against it
  kKept,       // not fetched, or refused: the old one stays (the log says why)
  kHeldBack,   // it would remove more than a tenth of the installed one's symbols
};

// Fetches the data set's master file, installs it in BaseDirectory only when IsValidMasterfile
// accepts it, then checks the download lists against it. A failed fetch or a refused file keeps
// the old master file. A file that would remove more than a tenth of the installed one's symbols
// is more likely cut short than revised: it is held back in the Base folder and installed only
// when the next fetch gives the same bytes. When `message` is given, a held-back file is
// explained there; `answer`, when given, gets how the service answered the fetch.
MasterfileRefresh RefreshMasterfile(Session& session, std::string* message = nullptr,
                                    FetchResult* answer = nullptr);

// Every line holds exactly one comma, and the field reader takes from each exactly one record of
// a name and a non-empty symbol; at least one line. False with `problem` naming the first fault.
bool IsValidMasterfile(const std::string& path, std::string& problem);

}  // namespace corvanet
