#pragma once
// A throw-away certificate authority for tests over TLS: its own key and self-signed certificate,
// and server certificates it signs for given names and dates, all as PEM files in a temporary
// folder. Nothing of it is trusted anywhere unless a test names its file.
//
//   TestAuthority authority;
//   const TestAuthority::Issued good = authority.Issue({"IP:127.0.0.1", "DNS:localhost"});
//   // serve with good.certificate / good.key; trust authority.certificate()
#include <chrono>
#include <string>
#include <vector>

#include "support/test_support.h"

namespace corvanet::test {

class TestAuthority {
 public:
  TestAuthority();

  // The authority's certificate, the file a client adds to its trust store.
  const std::string& certificate() const { return certificate_; }

  struct Issued {
    std::string certificate;  // PEM file
    std::string key;          // PEM file, unencrypted
  };
  // A server certificate for the subject alternative names ("DNS:localhost", "IP:127.0.0.1"),
  // valid from `valid_from` to `valid_until` counted from now (negative: in the past).
  Issued Issue(const std::vector<std::string>& names,
               std::chrono::hours valid_from = std::chrono::hours(-1),
               std::chrono::hours valid_until = std::chrono::hours(24)) const;

 private:
  TempDir dir_;
  std::string certificate_;
  std::string key_;
  mutable int issued_ = 0;
};

}  // namespace corvanet::test
