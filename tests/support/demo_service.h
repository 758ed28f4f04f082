#pragma once
// A loopback data service for end-to-end tests: generates a small data tree in a temporary folder
// and runs `corvanet-demo-service serve` on it as a child process on a free port.
//
//   corvanet::test::DemoService service;              // 12 composites, 2 years, fixed seed
//   request.url = service.url("/ovalith/data/NYSEDaily-CompositeStats.csv");
//   request.user = service.user(); request.password = service.password();
//   service.SetFaults({"*/Update-Daily.csv status 500"});  // applies from the next request
//   service.Advance(1);                                   // one more bar everywhere
#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "support/child_process.h"
#include "support/test_support.h"

namespace corvanet::test {

struct ProgramResult {
  int exit_code = -1;  // -1 when the program did not end by itself
  std::string out;
  std::string err;
};

// Runs a program to its end with no input, capturing both output streams; killed after `limit`.
ProgramResult RunProgram(const std::string& path, const std::vector<std::string>& args,
                         std::chrono::milliseconds limit = std::chrono::seconds(60));

struct DemoServiceOptions {
  int composites = 12;  // the standard data set; the all-issues set holds two more
  int years = 2;
  std::uint64_t seed = 7;
  std::string message_kind = "0";  // -1, 0, 1, empty or none (no message file)
  std::string user = "demo";
  std::string password = "pa:ss@w/rd";   // the characters that break credentials in a URL
  std::vector<std::string> faults = {};  // fault rules in force from the start
  bool start = true;                     // false: generate only; call Start() later
  // Both set: the service speaks HTTPS with this certificate (PEM) and key.
  std::string tls_certificate = {};
  std::string tls_key = {};
};

class DemoService {
 public:
  // Throws std::runtime_error (with the tool's messages) when generating or starting fails.
  explicit DemoService(DemoServiceOptions options = {});
  // Stops the server (SIGTERM, then SIGKILL after 10 s) and removes the folder.
  ~DemoService();
  DemoService(const DemoService&) = delete;
  DemoService& operator=(const DemoService&) = delete;

  // A data set's folder on disk: "data", "DataAll" or "DataUS".
  std::string data_set_folder(std::string_view data_set = "data") const;
  // "127.0.0.1:43121".
  std::string host_and_port() const;
  // What the client's IP address setting holds: host_and_port(), with "https://" in front when
  // the service speaks HTTPS.
  std::string address() const;
  int port() const { return port_; }
  // "http://127.0.0.1:43121" (or https://) + path.
  std::string url(std::string_view path) const;
  const std::string& user() const { return options_.user; }
  const std::string& password() const { return options_.password; }

  // Replaces the fault rules; the running server reads them before its next request.
  void SetFaults(const std::vector<std::string>& rules);
  void Start();
  // Stops the server; afterwards connections to the port are refused.
  void Stop();
  bool running() const { return pid_ > 0; }
  ChildId pid() const { return pid_; }
  // Runs `advance --bars N`; throws when it fails.
  void Advance(int bars = 1);
  // The server's request log so far.
  std::string log() const;
  // How often the server was asked for a path holding this text.
  int Requests(std::string_view path_part) const;

 private:
  bool StartOn(int port);

  DemoServiceOptions options_;
  TempDir dir_;
  std::string root_;
  std::string faults_file_;
  std::string port_file_;
  std::string log_file_;
  int port_ = 0;
  ChildId pid_ = -1;
};

}  // namespace corvanet::test
