// The service's system message file.
#include "core/download/system_messages.h"
#include "fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace corvanet;
  ReadSystemMessage(fuzz::WriteInput("Zennor_System.txt", data, size));
  return 0;
}
