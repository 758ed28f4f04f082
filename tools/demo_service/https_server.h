#pragma once
// The server object for `serve`: plain HTTP, or HTTPS when both --tls-cert and --tls-key are given.
// HTTPS needs the library's OpenSSL build, which the POSIX systems have and the Windows build does
// not (Debian carries no OpenSSL for mingw-w64), so each system makes it in a file of its own.
#include <memory>

#include <httplib.h>

#include "demo_service/options.h"

namespace corvanet::demo {

// Throws RunError when the certificate or key cannot serve, or this build cannot serve HTTPS.
std::unique_ptr<httplib::Server> MakeServer(const Options& options);

}  // namespace corvanet::demo
