#pragma once
// One small HTTP interface. A fetch either stores the whole body at the local path or leaves the
// local file untouched, and its result tells apart "could not connect", "timed out", an HTTP status
// other than 2xx and a body cut short, so callers and run summaries can say what went wrong.
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace corvanet {

struct FetchRequest {
  std::string url;       // never holds credentials
  std::string user;      // sent as basic-auth user name
  std::string password;  // sent as basic-auth password; any character works
  long timeout_seconds = 60;

  bool operator==(const FetchRequest&) const = default;
};

enum class FetchStatus {
  kOk,
  kCouldNotConnect,
  kTimedOut,
  kHttpError,  // the server answered with a status other than 2xx
  kTruncated,  // the connection ended before the announced body was complete
  kDropped,    // the connection was closed with no (complete) answer
  kLocalWriteFailed,
  kFailed,  // anything else the transfer reported
};

struct FetchResult {
  FetchStatus status = FetchStatus::kFailed;
  long http_status = 0;
  std::uint64_t bytes = 0;
  std::string detail;            // the transfer library's words, for log lines
  long retry_after_seconds = 0;  // how long the service asked to wait (Retry-After), 0: not said
  bool ok() const { return status == FetchStatus::kOk; }
  // A failure that asking again later may cure: the network, a time-out, a cut body, 429 or 5xx.
  // Any other 4xx is the service's considered answer and a local write failure is ours.
  bool transient() const;
  // "HTTP 404", "could not connect", "timed out", ... for log lines and summaries.
  std::string Describe() const;
};

class FetchPool;

class HttpClient {
 public:
  virtual ~HttpClient() = default;
  // GETs the URL and, only when the whole body arrived with a 2xx status, replaces `local_path`
  // with it (through a temporary file in the same folder).
  virtual FetchResult FetchToFile(const FetchRequest& request, const std::string& local_path) = 0;
  // A pool of `connections` connections of its own that fetches several files side by side
  // (fetch_pool.h); nullptr from a client that fetches one file at a time.
  virtual std::unique_ptr<FetchPool> OpenPool(int connections);
};

// "http://" + data set address + remote path, a backslash in the path becoming '/' and each part of
// the path percent-encoded ("BRK B" -> "BRK%20B").
std::string ServiceUrl(std::string_view data_set_url, std::string_view remote_path);

// The libcurl client. One handle is kept, so a run reuses its connection.
class CurlHttpClient final : public HttpClient {
 public:
  CurlHttpClient();
  ~CurlHttpClient() override;
  CurlHttpClient(const CurlHttpClient&) = delete;
  CurlHttpClient& operator=(const CurlHttpClient&) = delete;

  FetchResult FetchToFile(const FetchRequest& request, const std::string& local_path) override;
  std::unique_ptr<FetchPool> OpenPool(int connections) override;

 private:
  void* handle_ = nullptr;  // CURL*, kept opaque so no header of libcurl leaks out
};

}  // namespace corvanet
