#include "support/stub_service.h"

#include <httplib.h>

#include "support/test_support.h"

namespace corvanet::test {

namespace {
std::string Base64(std::string_view text) {
  static constexpr char kDigits[] =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string out;
  std::size_t i = 0;
  for (; i + 2 < text.size(); i += 3) {
    const unsigned n = (static_cast<unsigned char>(text[i]) << 16) |
                       (static_cast<unsigned char>(text[i + 1]) << 8) |
                       static_cast<unsigned char>(text[i + 2]);
    for (int shift = 18; shift >= 0; shift -= 6) out += kDigits[(n >> shift) & 63];
  }
  if (i < text.size()) {
    unsigned n = static_cast<unsigned char>(text[i]) << 16;
    if (i + 1 < text.size()) n |= static_cast<unsigned char>(text[i + 1]) << 8;
    out += kDigits[(n >> 18) & 63];
    out += kDigits[(n >> 12) & 63];
    out += i + 1 < text.size() ? kDigits[(n >> 6) & 63] : '=';
    out += '=';
  }
  return out;
}
}  // namespace

StubService::StubService(std::string user, std::string password)
    : user_(std::move(user)), password_(std::move(password)), server_(new httplib::Server) {
  Start();
}

void StubService::Start() {
  server_->Get(".*", [this](const httplib::Request& request, httplib::Response& response) {
    std::string path = request.path;
    for (std::size_t pos; (pos = path.find("//")) != std::string::npos;) path.erase(pos, 1);
    std::lock_guard lock(mutex_);
    ++requests_[path];
    client_ports_.insert(request.remote_port);
    const std::string expected = "Basic " + Base64(user_ + ":" + password_);
    if (request.get_header_value("Authorization") != expected) {
      response.status = 401;
      response.set_header("WWW-Authenticate", "Basic realm=\"stub\"");
      response.set_content("<html><body>401</body></html>", "text/html");
      return;
    }
    const auto it = files_.find(path);
    if (it != files_.end() && !it->second.location.empty()) {
      response.status = 302;
      response.set_header("Location", it->second.location);
      return;
    }
    if (it == files_.end() || it->second.status != 200) {
      response.status = it == files_.end() ? 404 : it->second.status;
      response.set_content(
          "<html><body>Error " + std::to_string(response.status) + "</body></html>", "text/html");
      return;
    }
    const Entry& entry = it->second;
    switch (entry.body) {
      case Entry::Body::kWhole:
        response.set_content(entry.content, "text/csv");
        break;
      case Entry::Body::kUnsized:
        response.set_chunked_content_provider(
            "text/csv", [content = entry.content](std::size_t, httplib::DataSink& sink) {
              sink.write(content.data(), content.size());
              sink.done();
              return true;
            });
        break;
      case Entry::Body::kStalled:
        response.set_content_provider(
            entry.content.size(), "text/csv",
            [this, content = entry.content](std::size_t offset, std::size_t,
                                            httplib::DataSink& sink) {
              if (offset == 0) return sink.write(content.data(), content.size() / 2);
              std::unique_lock wait(mutex_);
              while (!stopping_ && sink.is_writable()) {
                stop_.wait_for(wait, std::chrono::milliseconds(50));
              }
              return false;
            });
        break;
    }
  });
  // A client keeps its connection for a whole run; the library would close it after five answers.
  server_->set_keep_alive_max_count(1000);
  port_ = server_->bind_to_any_port("127.0.0.1");
  thread_ = std::thread([this] { server_->listen_after_bind(); });
  WaitFor([this] { return server_->is_running(); });
}

StubService::~StubService() {
  {
    std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  stop_.notify_all();
  server_->stop();
  thread_.join();
}

std::string StubService::host_and_port() const {
  return "127.0.0.1:" + std::to_string(port_);
}

void StubService::SetFile(const std::string& path, std::string content) {
  std::lock_guard lock(mutex_);
  Entry entry;
  entry.content = std::move(content);
  files_[path] = std::move(entry);
}

void StubService::RemoveFile(const std::string& path) {
  std::lock_guard lock(mutex_);
  files_.erase(path);
}

void StubService::SetStatus(const std::string& path, int status) {
  std::lock_guard lock(mutex_);
  files_[path].status = status;
}

void StubService::SetRedirect(const std::string& path, std::string location) {
  std::lock_guard lock(mutex_);
  files_[path].location = std::move(location);
}

void StubService::SetUnsized(const std::string& path) {
  std::lock_guard lock(mutex_);
  files_[path].body = Entry::Body::kUnsized;
}

void StubService::SetStalled(const std::string& path) {
  std::lock_guard lock(mutex_);
  files_[path].body = Entry::Body::kStalled;
}

std::string StubService::url(const std::string& path) const {
  return (secure_ ? "https://" : "http://") + host_and_port() + path;
}

int StubService::connections() const {
  std::lock_guard lock(mutex_);
  return static_cast<int>(client_ports_.size());
}

int StubService::requests(const std::string& path) const {
  std::lock_guard lock(mutex_);
  const auto it = requests_.find(path);
  return it == requests_.end() ? 0 : it->second;
}

int StubService::total_requests() const {
  std::lock_guard lock(mutex_);
  int total = 0;
  for (const auto& [path, count] : requests_) total += count;
  return total;
}

}  // namespace corvanet::test
