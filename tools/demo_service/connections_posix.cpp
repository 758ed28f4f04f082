#include "demo_service/connections.h"

#include <netdb.h>
#include <sys/socket.h>

#include <cstdlib>
#include <filesystem>
#include <functional>

namespace corvanet::demo {

namespace {

struct EndPoints {
  int local_port = -1;
  std::string peer_host;
  int peer_port = -1;
};

std::string NumericHost(const sockaddr_storage& address, socklen_t length, int& port) {
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
void ForEachConnection(const std::function<void(int fd, const EndPoints&)>& visit) {
  std::error_code ec;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd", ec)) {
    const int fd = std::atoi(entry.path().filename().c_str());
    sockaddr_storage local{}, peer{};
    socklen_t local_length = sizeof local, peer_length = sizeof peer;
    if (::getsockname(fd, reinterpret_cast<sockaddr*>(&local), &local_length) != 0 ||
        ::getpeername(fd, reinterpret_cast<sockaddr*>(&peer), &peer_length) != 0) {
      continue;
    }
    EndPoints ends;
    NumericHost(local, local_length, ends.local_port);
    ends.peer_host = NumericHost(peer, peer_length, ends.peer_port);
    visit(fd, ends);
  }
}

}  // namespace

void ShutdownConnection(int local_port, const std::string& peer_host, int peer_port) {
  ForEachConnection([&](int fd, const EndPoints& ends) {
    if (ends.local_port == local_port && ends.peer_port == peer_port &&
        ends.peer_host == peer_host) {
      ::shutdown(fd, SHUT_RDWR);
    }
  });
}

void ShutdownAllConnections() {
  ForEachConnection([](int fd, const EndPoints&) { ::shutdown(fd, SHUT_RDWR); });
}

}  // namespace corvanet::demo
