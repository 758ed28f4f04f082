// A download list file: restored into the window, counted for a run.
#include "core/lists/download_lists.h"
#include "core/lists/run_total.h"
#include "core/platform/files.h"
#include "fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace corvanet;
  static fuzz::ScratchSession scratch;
  Session& session = scratch.session;
  WriteWholeFile(session.ui.PathToLists + "Download3.csv", fuzz::AsText(data, size));
  WriteWholeFile(session.ui.PathToLists + "Download7.csv", fuzz::AsText(data, size));
  for (const int list : {3, 7}) {
    DownloadList_Click(session, list);
    CountRunDatafiles(session);
  }
  return 0;
}
