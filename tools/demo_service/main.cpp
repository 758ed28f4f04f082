// corvanet-demo-service: a local stand-in for the data service, for trying the program and for
// its end-to-end tests.
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "demo_service/commands.h"
#include "demo_service/options.h"

namespace {

constexpr const char* kUsage =
    "usage:\n"
    "  corvanet-demo-service generate --root DIR [--composites N] [--years Y] [--seed S]\n"
    "                                 [--message-kind -1|0|1|empty|none]\n"
    "  corvanet-demo-service advance  --root DIR [--bars K]\n"
    "  corvanet-demo-service serve    --root DIR [--host 127.0.0.1] [--port P] --user U\n"
    "                                 --password PW [--faults FILE] [--fault RULE ...]\n"
    "                                 [--port-file F] [--tls-cert PEM --tls-key PEM]\n"
    "A fault rule is PATTERN ACTION [VALUE] [times N]; ACTION is status CODE, delay MS,\n"
    "truncate, stall, drop or redirect URL; PATTERN is a glob over the request path, e.g.\n"
    "'*/Update-Daily.csv'. With --tls-cert and --tls-key the service speaks HTTPS.\n"
    "--port 0 picks a free port; the port is printed and written to the --port-file.\n";

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> words(argv + 1, argv + argc);
  if (words.empty() || words[0] == "--help" || words[0] == "-h" || words[0] == "help") {
    (words.empty() ? std::cerr : std::cout) << kUsage;
    return words.empty() ? 2 : 0;
  }
  const std::vector<std::string> args(words.begin() + 1, words.end());
  try {
    if (words[0] == "generate") return corvanet::demo::Generate(args, std::cout);
    if (words[0] == "advance") return corvanet::demo::Advance(args, std::cout);
    if (words[0] == "serve") return corvanet::demo::Serve(args, std::cout, std::cerr);
    throw corvanet::demo::UsageError("unknown command '" + words[0] + "'");
  } catch (const corvanet::demo::UsageError& e) {
    std::cerr << "corvanet-demo-service: " << e.what() << "\n" << kUsage;
    return 2;
  } catch (const std::exception& e) {
    std::cerr << "corvanet-demo-service: " << e.what() << "\n";
    return 1;
  }
}
