#pragma once
// A small data service inside the test process: serves files from memory over real HTTP (or
// HTTPS) on 127.0.0.1, checks basic-auth credentials, and counts requests per path and the
// connections they came on.
#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>

namespace httplib {
class Server;
}

namespace corvanet::test {

class StubService {
 public:
  StubService(std::string user = "user", std::string password = "secret");
  // Over HTTPS with this certificate and key (PEM files). Not in the Windows build, whose server
  // library has no TLS (stub_service_tls_posix.cpp).
  struct Tls {
    std::string certificate;
    std::string key;
  };
  explicit StubService(const Tls& tls, std::string user = "user", std::string password = "secret");
  ~StubService();
  StubService(const StubService&) = delete;
  StubService& operator=(const StubService&) = delete;

  // "127.0.0.1:PORT", the host text a session's IPAddress takes.
  std::string host_and_port() const;
  // "http://" or "https://" + host_and_port() + path.
  std::string url(const std::string& path) const;
  void SetFile(const std::string& path, std::string content);
  void RemoveFile(const std::string& path);
  // Answers `path` with this status and an HTML error page instead of the file.
  void SetStatus(const std::string& path, int status);
  // Answers `path` with 302 and this Location.
  void SetRedirect(const std::string& path, std::string location);
  // Sends the file without announcing its length (chunked).
  void SetUnsized(const std::string& path);
  // Announces the file's length, sends half of it, and then nothing while the connection stays
  // open (until the client gives up or the service ends).
  void SetStalled(const std::string& path);
  int requests(const std::string& path) const;
  int total_requests() const;
  // Requests that reached the service's handler at all, and the connections they came on.
  int connections() const;

 private:
  struct Entry {
    std::string content;
    int status = 200;
    std::string location;
    enum class Body { kWhole, kUnsized, kStalled } body = Body::kWhole;
  };
  void Start();
  std::string user_;
  std::string password_;
  std::unique_ptr<httplib::Server> server_;
  std::thread thread_;
  int port_ = 0;
  mutable std::mutex mutex_;
  std::map<std::string, Entry> files_;
  std::map<std::string, int> requests_;
  std::set<int> client_ports_;
  bool secure_ = false;
  bool stopping_ = false;
  std::condition_variable stop_;
};

}  // namespace corvanet::test
