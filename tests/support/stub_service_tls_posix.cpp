#include <httplib.h>

#include "support/stub_service.h"

namespace corvanet::test {

httplib::Server* StubService::MakeTlsServer(const std::string& certificate,
                                            const std::string& key) {
  return new httplib::SSLServer(certificate.c_str(), key.c_str());
}

}  // namespace corvanet::test
