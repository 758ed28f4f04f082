#include <httplib.h>

#include "support/stub_service.h"

namespace corvanet::test {

StubService::StubService(const Tls& tls, std::string user, std::string password)
    : user_(std::move(user)),
      password_(std::move(password)),
      server_(new httplib::SSLServer(tls.certificate.c_str(), tls.key.c_str())),
      secure_(true) {
  Start();
}

}  // namespace corvanet::test
