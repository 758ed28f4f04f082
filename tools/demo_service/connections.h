#pragma once
// Ending client connections from outside the server library, which keeps its sockets to itself:
// the sockets are found among the process's descriptors by their end points.
#include <string>

namespace corvanet::demo {

// Shuts down the connection between the server's `local_port` and the client at
// `peer_host`:`peer_port`, so the client sees it close without an answer.
void ShutdownConnection(int local_port, const std::string& peer_host, int peer_port);

// Shuts down every client connection, so idle keep-alive connections do not hold up an exit.
void ShutdownAllConnections();

}  // namespace corvanet::demo
