#pragma once
// The WinHTTP client's own certificate checks, for what WinHTTP cannot be asked to do: trust the
// authorities a request adds (CAFile) besides the system's, and tell why a certificate failed
// (Wine reports every failure alike). Included only by the platform's Windows HTTP sources.
#include <windows.h>
// After windows.h, whose types it uses.
#include <wincrypt.h>

#include <string>
#include <vector>

#include "core/platform/http.h"

namespace corvanet::winhttp {

// The authorities a request adds, read from their PEM files into a store of their own; read again
// only when a request names other files.
class AddedAuthorities {
 public:
  AddedAuthorities() = default;
  AddedAuthorities(const AddedAuthorities&) = delete;
  AddedAuthorities& operator=(const AddedAuthorities&) = delete;
  ~AddedAuthorities();

  // False, with `unusable` naming the file, when one cannot be read or holds no certificate.
  bool Load(const std::vector<std::string>& files, std::string& unusable);
  // Null when the request adds none.
  HCERTSTORE store() const { return store_; }

 private:
  std::vector<std::string> files_;
  HCERTSTORE store_ = nullptr;
};

// What is wrong with a server's certificate for `host`, trusting the system's authorities and
// those in `added` (may be null): kNone when nothing.
CertificateProblem CheckServerCertificate(PCCERT_CONTEXT certificate, const std::wstring& host,
                                          HCERTSTORE added);

// Why the server at `host`:`port` failed WinHTTP's TLS check, found by a handshake of its own that
// sends nothing but "HEAD /" (no credentials, no path of ours) and is cancelled before that where
// the system allows; kOther when no certificate came (a failure of TLS itself).
CertificateProblem DiagnoseServer(const std::wstring& host, WORD port, HCERTSTORE added);

}  // namespace corvanet::winhttp
