// The converter's reader of a ten-column price file.
#include "fuzz_support.h"
#include "pxfiles/price_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace corvanet;
  pxfiles::PriceFile prices;
  std::string error;
  pxfiles::ReadPriceFile(fuzz::WriteInput("prices.csv", data, size), prices, error);
  return 0;
}
