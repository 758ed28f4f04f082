#pragma once
// One line per request on the log stream: method, path, status, bytes and, for injected faults,
// the rule. Headers are never logged, so credentials never reach the log.
#include <cstdint>
#include <mutex>
#include <ostream>
#include <string>
#include <string_view>

namespace corvanet::demo {

class RequestLog {
 public:
  explicit RequestLog(std::ostream& out) : out_(out) {}
  // `status` 0 is written as "-" (no answer was sent).
  void Request(std::string_view method, std::string_view path, int status, std::uint64_t bytes,
               std::string_view note = {});
  void Note(std::string_view text);

 private:
  void Write(const std::string& line);

  std::ostream& out_;
  std::mutex mutex_;  // lines of concurrent requests must not interleave
};

}  // namespace corvanet::demo
