// The demo service's fault rules, as a tester types them.
#include <vector>

#include "demo_service/fault_rules.h"
#include "fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace corvanet;
  std::vector<demo::FaultRule> rules;
  std::string error;
  demo::ParseFaultRules(fuzz::AsText(data, size), rules, error);
  for (const demo::FaultRule& rule : rules) demo::GlobMatch(rule.pattern, "/ovalith/data/x.csv");
  return 0;
}
