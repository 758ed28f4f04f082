#include "demo_service/request_handler.h"

#include <chrono>
#include <filesystem>
#include <memory>

#include "core/platform/file_access.h"
#include "demo_service/basic_auth.h"
#include "demo_service/connections.h"
#include "demo_service/served_path.h"

namespace corvanet::demo {

namespace {

constexpr std::size_t kChunk = 64 * 1024;
// A stalled answer holds its connection at most this long, or until the server stops.
constexpr int kLongestStallMs = 10 * 60 * 1000;

const char* Reason(int status) {
  switch (status) {
    case 400:
      return "Bad Request";
    case 302:
      return "Found";
    case 401:
      return "Unauthorized";
    case 403:
      return "Forbidden";
    case 404:
      return "Not Found";
    case 405:
      return "Method Not Allowed";
    case 500:
      return "Internal Server Error";
    case 502:
      return "Bad Gateway";
    case 503:
      return "Service Unavailable";
    case 504:
      return "Gateway Timeout";
    default:
      return status < 500 ? "Client Error" : "Server Error";
  }
}

// Error answers carry a small HTML page, as a real web server's do, so a client that saved
// whatever came back would be caught holding HTML instead of CSV.
std::size_t ErrorPage(httplib::Response& response, int status) {
  const std::string title = std::to_string(status) + " " + Reason(status);
  response.status = status;
  // A busy or overloaded server says when to come back, and a polite client waits that long.
  if (status == 429 || status == 503) response.set_header("Retry-After", "1");
  response.set_content("<html><head><title>" + title + "</title></head><body><h1>" + title +
                           "</h1></body></html>\r\n",
                       "text/html");
  return response.body.size();
}

std::string ContentType(const std::string& path) {
  const std::string extension = std::filesystem::path(path).extension().string();
  if (extension == ".csv") return "text/csv";
  if (extension == ".txt") return "text/plain";
  return "application/octet-stream";
}

}  // namespace

void StopSignal::Stop() {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    stopped_ = true;
  }
  changed_.notify_all();
}

bool StopSignal::Wait(int ms) {
  std::unique_lock<std::mutex> lock(mutex_);
  return !changed_.wait_for(lock, std::chrono::milliseconds(ms), [this] { return stopped_; });
}

std::optional<std::uint64_t> RequestHandler::ServeFile(const std::string& path, Cut cut,
                                                       httplib::Response& response) {
  const int fd = OpenForReading(path);
  if (fd < 0) return std::nullopt;
  const std::optional<std::uint64_t> length = LengthOf(fd);
  if (!length) {
    CloseFile(fd);
    return std::nullopt;
  }
  // The length is fixed when the request arrives, so a file that `advance` appends to meanwhile
  // still goes out whole and consistent.
  const auto size = static_cast<std::size_t>(*length);
  const bool cut_short = cut != Cut::kNone;
  const std::size_t announced = cut_short ? std::max<std::size_t>(size, 1) : size;
  const std::size_t sent = cut_short ? size / 2 : size;
  StopSignal* stall_until = cut == Cut::kStall ? &stop_ : nullptr;
  auto file = std::shared_ptr<int>(new int(fd), [](int* f) {
    CloseFile(*f);
    delete f;
  });
  response.status = 200;
  response.set_content_provider(
      announced, ContentType(path),
      [file, sent, stall_until](std::size_t offset, std::size_t, httplib::DataSink& sink) {
        // Returning false ends the connection: for a truncated answer, after `sent` bytes.
        if (offset >= sent) {
          if (stall_until != nullptr) stall_until->Wait(kLongestStallMs);
          return false;
        }
        char buffer[kChunk];
        const std::size_t want = std::min(kChunk, sent - offset);
        const long got = ReadAt(*file, buffer, want, offset);
        if (got <= 0) return false;
        return sink.write(buffer, static_cast<std::size_t>(got));
      });
  return sent;
}

void RequestHandler::Handle(const httplib::Request& request, httplib::Response& response) {
  const std::string path = CollapseSlashes(request.path);
  if (request.method != "GET" && request.method != "HEAD") {
    response.set_header("Allow", "GET, HEAD");
    log_.Request(request.method, path, 405, ErrorPage(response, 405));
    return;
  }
  if (!CredentialsMatch(request.get_header_value("Authorization"), credentials_.user,
                        credentials_.password)) {
    response.set_header("WWW-Authenticate", "Basic realm=\"corvanet-demo-service\"");
    log_.Request(request.method, path, 401, ErrorPage(response, 401));
    return;
  }

  const FaultPlan plan = faults_.Plan(path);
  if (!plan.note.empty()) log_.Note(plan.note);
  if (plan.delay_ms > 0) stop_.Wait(plan.delay_ms);
  Cut cut = Cut::kNone;
  std::string note = plan.delay_ms > 0 ? "delayed " + std::to_string(plan.delay_ms) + " ms" : "";
  if (plan.answer) {
    note += note.empty() ? "" : "; ";
    note += "fault: " + plan.answer->text;
    switch (plan.answer->action) {
      case FaultAction::kStatus:
        log_.Request(request.method, path, plan.answer->value,
                     ErrorPage(response, plan.answer->value), note);
        return;
      case FaultAction::kDrop:
        ShutdownConnection(request.local_port, request.remote_addr, request.remote_port);
        log_.Request(request.method, path, 0, 0, note);
        return;
      case FaultAction::kRedirect:
        response.set_header("Location", plan.answer->location);
        log_.Request(request.method, path, 302, ErrorPage(response, 302), note);
        return;
      case FaultAction::kTruncate:
        cut = Cut::kTruncate;
        break;
      case FaultAction::kStall:
        cut = Cut::kStall;
        break;
      case FaultAction::kDelay:
        break;
    }
  }

  const std::optional<std::string> local = LocalPath(root_, path);
  const std::optional<std::uint64_t> bytes =
      local ? ServeFile(*local, cut, response) : std::nullopt;
  if (!bytes) {
    log_.Request(request.method, path, 404, ErrorPage(response, 404), note);
    return;
  }
  log_.Request(request.method, path, 200, request.method == "HEAD" ? 0 : *bytes, note);
}

}  // namespace corvanet::demo
