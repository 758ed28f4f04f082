#pragma once
// A small data service inside the test process: serves files from memory over real HTTP on
// 127.0.0.1, checks basic-auth credentials, and counts requests per path.
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace httplib {
class Server;
}

namespace corvanet::test {

class StubService {
 public:
  StubService(std::string user = "user", std::string password = "secret");
  ~StubService();
  StubService(const StubService&) = delete;
  StubService& operator=(const StubService&) = delete;

  // "127.0.0.1:PORT", the host text a session's IPAddress takes.
  std::string host_and_port() const;
  void SetFile(const std::string& path, std::string content);
  void RemoveFile(const std::string& path);
  // Answers `path` with this status and an HTML error page instead of the file.
  void SetStatus(const std::string& path, int status);
  int requests(const std::string& path) const;
  int total_requests() const;

 private:
  struct Entry {
    std::string content;
    int status = 200;
  };
  std::string user_;
  std::string password_;
  std::unique_ptr<httplib::Server> server_;
  std::thread thread_;
  int port_ = 0;
  mutable std::mutex mutex_;
  std::map<std::string, Entry> files_;
  std::map<std::string, int> requests_;
};

}  // namespace corvanet::test
