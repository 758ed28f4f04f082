#include "demo_service/https_server.h"

namespace corvanet::demo {

std::unique_ptr<httplib::Server> MakeServer(const Options& options) {
  if (options.Has("tls-cert") || options.Has("tls-key")) {
    throw RunError("this build serves plain HTTP only; serve HTTPS with the Linux build");
  }
  return std::make_unique<httplib::Server>();
}

}  // namespace corvanet::demo
