#pragma once
// The request to stop the server from outside: SIGINT or SIGTERM on POSIX, Ctrl+C, Ctrl+Break or
// the console closing on Windows (a program ended with TerminateProcess is not asked). Taken by
// one waiting thread, so the server is stopped from an ordinary thread rather than from a handler.
#include <string>
#include <thread>

namespace corvanet::demo {

class StopRequest {
 public:
  // Before any other thread starts, so that every thread leaves the request to the waiter.
  StopRequest();
  // Waits for a request; its name ("SIGTERM", "Ctrl+C", ...).
  std::string Wait();
  // Ends the Wait of `waiter` when the server stopped by itself.
  void Release(std::thread& waiter);
};

}  // namespace corvanet::demo
