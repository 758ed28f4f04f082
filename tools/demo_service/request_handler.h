#pragma once
// Answers one request: authentication, the fault rules, then the file.
#include <condition_variable>
#include <mutex>
#include <string>

#include <httplib.h>

#include "demo_service/fault_rules.h"
#include "demo_service/request_log.h"

namespace corvanet::demo {

// Lets injected delays end early when the server shuts down.
class StopSignal {
 public:
  void Stop();
  // Waits `ms` milliseconds; false when the wait was cut short by Stop.
  bool Wait(int ms);

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  bool stopped_ = false;
};

struct Credentials {
  std::string user;
  std::string password;
};

class RequestHandler {
 public:
  RequestHandler(std::string root, Credentials credentials, FaultBook& faults, RequestLog& log,
                 StopSignal& stop)
      : root_(std::move(root)),
        credentials_(std::move(credentials)),
        faults_(faults),
        log_(log),
        stop_(stop) {}

  void Handle(const httplib::Request& request, httplib::Response& response);

 private:
  // How much of a file's answer goes out.
  enum class Cut { kNone, kTruncate, kStall };
  // Streams the file; cut short, announces its length but sends half, then ends the connection
  // (kTruncate) or holds it open until the server stops (kStall). Returns the bytes to be sent,
  // or nullopt when there is no such file.
  std::optional<std::uint64_t> ServeFile(const std::string& path, Cut cut,
                                         httplib::Response& response);

  std::string root_;
  Credentials credentials_;
  FaultBook& faults_;
  RequestLog& log_;
  StopSignal& stop_;
};

}  // namespace corvanet::demo
