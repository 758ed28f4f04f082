// Windows keeps no list of a process's sockets that could be read like /proc/self/fd, but a socket
// is a handle, and a process's handles are small multiples of four: the server's connections are
// found by asking each such value for its end points.
#include <winsock2.h>
#include <ws2tcpip.h>

#include <cstdlib>
#include <functional>

#include "demo_service/connections.h"

namespace corvanet::demo {

namespace {

// Far above the handles a server with a few dozen connections holds.
constexpr UINT_PTR kLastHandle = 0x4000;

struct EndPoints {
  int local_port = -1;
  std::string peer_host;
  int peer_port = -1;
};

std::string NumericHost(const sockaddr_storage& address, int length, int& port) {
  char host[NI_MAXHOST] = {};
  char service[NI_MAXSERV] = {};
  if (::getnameinfo(reinterpret_cast<const sockaddr*>(&address), length, host, sizeof host, service,
                    sizeof service, NI_NUMERICHOST | NI_NUMERICSERV) != 0) {
    return {};
  }
  port = std::atoi(service);
  return host;
}

// Calls `visit` for every connected socket of the process (listening sockets have no peer).
void ForEachConnection(const std::function<void(SOCKET socket, const EndPoints&)>& visit) {
  for (UINT_PTR value = 4; value <= kLastHandle; value += 4) {
    const auto socket = static_cast<SOCKET>(value);
    sockaddr_storage local{}, peer{};
    int local_length = sizeof local, peer_length = sizeof peer;
    if (::getsockname(socket, reinterpret_cast<sockaddr*>(&local), &local_length) != 0 ||
        ::getpeername(socket, reinterpret_cast<sockaddr*>(&peer), &peer_length) != 0) {
      continue;
    }
    EndPoints ends;
    NumericHost(local, local_length, ends.local_port);
    ends.peer_host = NumericHost(peer, peer_length, ends.peer_port);
    visit(socket, ends);
  }
}

}  // namespace

void ShutdownConnection(int local_port, const std::string& peer_host, int peer_port) {
  ForEachConnection([&](SOCKET socket, const EndPoints& ends) {
    if (ends.local_port == local_port && ends.peer_port == peer_port &&
        ends.peer_host == peer_host) {
      ::shutdown(socket, SD_BOTH);
    }
  });
}

void ShutdownAllConnections() {
  ForEachConnection([](SOCKET socket, const EndPoints&) { ::shutdown(socket, SD_BOTH); });
}

}  // namespace corvanet::demo
