#pragma once
// What the one-at-a-time WinHTTP client and its connection pool share: a connection to one server
// that stays open between requests (keep-alive), and one GET over it. Included only by the
// platform's Windows HTTP sources, so no other part of the program sees WinHTTP.
#include <windows.h>
#include <winhttp.h>

#include <string>

#include "core/platform/atomic_file_writer.h"
#include "core/platform/http.h"
#include "core/platform/winhttp_certificates.h"

namespace corvanet::winhttp {

// A session with its connection handle for the server of the last request; a request to another
// server (or port, or scheme) opens a new one.
class Connection {
 public:
  Connection() = default;
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection() { Close(); }

  // GETs `request` and writes its body to `body` (not committed). The result says how it ended
  // as FetchResult tells it. An https:// address is checked as http.h says: the system's
  // authorities and the request's own, the host name, the dates; no redirect is followed.
  FetchResult Fetch(const FetchRequest& request, AtomicFileWriter& body);
  void Close();

 private:
  HINTERNET session_ = nullptr;
  HINTERNET connection_ = nullptr;
  std::wstring server_key_;  // "<scheme>://<host>:<port>" of connection_
  AddedAuthorities authorities_;
};

}  // namespace corvanet::winhttp
