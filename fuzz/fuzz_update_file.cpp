// The period update file: indexed once, then asked for the rows of a few symbols.
#include "core/download/update_file_index.h"
#include "fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace corvanet;
  UpdateFileIndex index;
  index.Load(fuzz::WriteInput("Update-Daily.csv", data, size));
  for (const char* symbol : {"NYSE", "DJ30", "", "X", "$"}) {
    index.RowsFor(symbol);
    index.EndsOnOtherSymbol(symbol);
  }
  return 0;
}
