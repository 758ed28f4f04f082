// The converter's reader of a MetaStock folder's MASTER, EMASTER and XMASTER, and a record put
// into what it read.
#include <fuzzer/FuzzedDataProvider.h>

#include "core/platform/files.h"
#include "fuzz_support.h"
#include "pxfiles/index_files.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace corvanet;
  FuzzedDataProvider input(data, size);
  const std::string folder = fuzz::ScratchFolder() + "metastock/";
  CreateFolders(folder);
  for (const char* name : {"MASTER", "EMASTER", "XMASTER"}) {
    const std::string bytes = input.ConsumeRandomLengthString(4096);
    if (input.ConsumeBool()) {
      WriteWholeFile(folder + name, bytes);
    } else {
      RemoveFile(folder + name);
    }
  }
  pxfiles::IndexFiles index;
  std::string error;
  if (!index.Load(folder, error)) return 0;
  const std::string symbol = input.ConsumeRandomLengthString(pxfiles::kSymbolLength);
  const std::string name = input.ConsumeRandomLengthString(60);
  pxfiles::SecurityFields security;
  security.symbol = symbol;
  security.name = name;
  pxfiles::Placement placement;
  index.Record(security, placement, error);
  return 0;
}
