#include "demo_service/https_server.h"

namespace corvanet::demo {

std::unique_ptr<httplib::Server> MakeServer(const Options& options) {
  if (!options.Has("tls-cert") && !options.Has("tls-key")) {
    return std::make_unique<httplib::Server>();
  }
  const std::string& certificate = options.Required("tls-cert");
  const std::string& key = options.Required("tls-key");
  auto server = std::make_unique<httplib::SSLServer>(certificate.c_str(), key.c_str());
  if (!server->is_valid()) {
    throw RunError("cannot serve HTTPS with the certificate " + certificate + " and the key " +
                   key + " (a PEM certificate, its chain after it, and its unencrypted key)");
  }
  return server;
}

}  // namespace corvanet::demo
