// The merge index a run keeps in Base/: loaded whatever it holds, asked for a few datafiles, saved
// and loaded again.
#include "core/download/merge_index.h"
#include "core/download/retrieve.h"
#include "core/platform/files.h"
#include "fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace corvanet;
  static fuzz::ScratchSession scratch;
  Session& session = scratch.session;
  const std::string path = BaseFolder(session) + std::string(MergeIndex::kFileName);
  WriteWholeFile(path, fuzz::AsText(data, size));
  {
    MergeIndex index(session);
    const FileIdentity identity{1, 2, 3, 4, 5};
    for (const char* datafile : {"/a/Daily/$NYA.csv", "", ","}) {
      index.Match(datafile, identity, identity);
      index.Match(datafile, std::nullopt, identity);
    }
    index.Put("x", MergedPrefix{.base = identity,
                                .base_bytes = 1,
                                .base_lines = 2,
                                .last_date = "20240102",
                                .field_commas = 3,
                                .datafile = identity,
                                .datafile_bytes = 1});
    index.Save();
  }
  MergeIndex again(session);
  return 0;
}
