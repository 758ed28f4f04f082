#include "support/demo_service.h"

#include <cstdio>
#include <stdexcept>

#include "core/platform/text.h"
#include "support/child_process.h"

namespace corvanet::test {

namespace {

const std::string& ToolPath() {
  static const std::string path = BinaryPath("corvanet-demo-service");
  return path;
}

}  // namespace

ProgramResult RunProgram(const std::string& path, const std::vector<std::string>& args,
                         std::chrono::milliseconds limit) {
  TempDir scratch;
  const ChildId child = SpawnChild(path, args, scratch / "out", scratch / "err");
  ProgramResult result;
  result.exit_code = WaitForChild(child, limit);
  result.out = ReadFile(scratch / "out");
  result.err = ReadFile(scratch / "err");
  return result;
}

DemoService::DemoService(DemoServiceOptions options)
    : options_(std::move(options)),
      root_(dir_ / "root/"),
      faults_file_(dir_ / "faults.txt"),
      port_file_(dir_ / "port"),
      log_file_(dir_ / "serve.log") {
  const ProgramResult generated = RunProgram(
      ToolPath(), {"generate", "--root", root_, "--composites", std::to_string(options_.composites),
                   "--years", std::to_string(options_.years), "--seed",
                   std::to_string(options_.seed), "--message-kind", options_.message_kind});
  if (generated.exit_code != 0) {
    throw std::runtime_error("corvanet-demo-service generate failed: " + generated.err);
  }
  SetFaults(options_.faults);
  if (options_.start) Start();
}

DemoService::~DemoService() {
  Stop();
}

std::string DemoService::data_set_folder(std::string_view data_set) const {
  return root_ + "ovalith/" + std::string(data_set) + "/";
}

std::string DemoService::host_and_port() const {
  return "127.0.0.1:" + std::to_string(port_);
}

std::string DemoService::address() const {
  return (options_.tls_certificate.empty() ? "" : "https://") + host_and_port();
}

std::string DemoService::url(std::string_view path) const {
  return (options_.tls_certificate.empty() ? "http://" : "https://") + host_and_port() +
         std::string(path);
}

void DemoService::SetFaults(const std::vector<std::string>& rules) {
  // Written beside and renamed over, so the server never reads half a file.
  std::string content;
  for (const std::string& rule : rules) content += rule + "\n";
  const std::string temporary = faults_file_ + ".new";
  WriteFile(temporary, content);
  if (!RenameOver(temporary, faults_file_)) {
    throw std::runtime_error("cannot write " + faults_file_);
  }
}

void DemoService::Start() {
  if (running()) return;
  // The same port again if it was used before, so a client's settings stay valid; another one
  // only when it was taken meanwhile.
  if (port_ != 0 && StartOn(port_)) return;
  if (!StartOn(0)) throw std::runtime_error("corvanet-demo-service serve failed: " + log());
}

bool DemoService::StartOn(int port) {
  std::remove(port_file_.c_str());
  std::vector<std::string> args = {"serve",
                                   "--root",
                                   root_,
                                   "--host",
                                   "127.0.0.1",
                                   "--port",
                                   std::to_string(port),
                                   "--user",
                                   options_.user,
                                   "--password",
                                   options_.password,
                                   "--faults",
                                   faults_file_,
                                   "--port-file",
                                   port_file_};
  if (!options_.tls_certificate.empty()) {
    args.insert(args.end(),
                {"--tls-cert", options_.tls_certificate, "--tls-key", options_.tls_key});
  }
  pid_ = SpawnChild(ToolPath(), args, dir_ / "serve.out", log_file_);
  int status = 0;
  bool exited = false;
  WaitFor([&] {
    exited = ChildEnded(pid_, status);
    return exited || !ReadFile(port_file_).empty();
  });
  std::string port_text = ReadFile(port_file_);
  while (!port_text.empty() && (port_text.back() == '\n' || port_text.back() == '\r')) {
    port_text.pop_back();
  }
  int bound = 0;
  if (exited || !ParseInteger(port_text, bound) || bound <= 0) {
    if (!exited) KillChild(pid_);
    pid_ = -1;
    return false;
  }
  port_ = bound;
  return true;
}

void DemoService::Stop() {
  if (!running()) return;
  StopChild(pid_);
  WaitForChild(pid_, std::chrono::seconds(10));
  pid_ = -1;
}

void DemoService::Advance(int bars) {
  const ProgramResult result =
      RunProgram(ToolPath(), {"advance", "--root", root_, "--bars", std::to_string(bars)});
  if (result.exit_code != 0) {
    throw std::runtime_error("corvanet-demo-service advance failed: " + result.err);
  }
}

std::string DemoService::log() const {
  return ReadFile(log_file_);
}

int DemoService::Requests(std::string_view path_part) const {
  int count = 0;
  const std::string text = log();
  for (std::size_t pos = text.find(path_part); pos != std::string::npos;
       pos = text.find(path_part, pos + 1)) {
    ++count;
  }
  return count;
}

}  // namespace corvanet::test
