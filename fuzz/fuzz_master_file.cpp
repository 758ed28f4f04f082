// A master file from the service: checked before it is installed; once installed it loads into
// the master list and the lists are checked against it. A file that passes the check reads as
// exactly one item per line.
#include <cstdlib>

#include "core/download/check_lists.h"
#include "core/download/refresh_masterfile.h"
#include "core/lists/masterfile.h"
#include "core/platform/files.h"
#include "core/platform/line_reader.h"
#include "fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace corvanet;
  static fuzz::ScratchSession scratch;
  Session& session = scratch.session;
  const std::string path = MasterFilePath(session);
  WriteWholeFile(path, fuzz::AsText(data, size));
  std::string problem;
  const bool valid = IsValidMasterfile(path, problem);
  LoadMasterfile(session);
  if (valid) {
    LineReader lines;
    std::size_t count = 0;
    std::string_view line;
    if (lines.Open(path)) {
      while (lines.Next(line)) ++count;
    }
    if (session.ui.List5.items.size() != count) std::abort();
  }
  WriteWholeFile(session.ui.PathToLists + "Download1.csv",
                 "eSignal,eSignal\r\nDailyInterval,1\r\nWeeklyInterval,0\r\nMonthlyInterval,0\r\n"
                 "QuarterlyInterval,0\r\nNYSE Composite,$NYA\r\nDow,$INDU\r\n");
  CheckLists(session, session.ui.PathToLists, path);
  return 0;
}
