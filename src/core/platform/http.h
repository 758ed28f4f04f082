#pragma once
// One small HTTP interface. A fetch either stores the whole body at the local path or leaves the
// local file untouched, and its result tells apart "could not connect", "timed out", an HTTP status
// other than 2xx and a body cut short, so callers and run summaries can say what went wrong.
//
// What every client honours, whatever library it is built on: an https:// address is reached over
// TLS with the certificate checked against the system's authorities (and any the request adds)
// and the host name, before anything of the request is sent; there is no way to skip the check.
// Redirects are never followed. A body over the request's limit, or one that stops coming, fails.
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvanet {

// Far above any real datafile: a guard against a runaway answer filling the disk, not a quota.
inline constexpr std::uint64_t kDefaultMaxBodyMiB = 64;
inline constexpr std::uint64_t kMiB = 1024 * 1024;
// A transfer that moves no byte for this long is taken for hung.
inline constexpr long kDefaultStallSeconds = 30;

struct FetchRequest {
  std::string url;       // never holds credentials
  std::string user;      // sent as basic-auth user name
  std::string password;  // sent as basic-auth password; any character works
  long timeout_seconds = 60;
  // PEM files of authorities trusted besides the system's own (a service with a private one).
  std::vector<std::string> extra_authorities;
  std::uint64_t max_body_bytes = kDefaultMaxBodyMiB * kMiB;  // 0: no limit
  long stall_seconds = kDefaultStallSeconds;

  bool operator==(const FetchRequest&) const = default;
};

// The data service's address as a user types it, or a whole request URL: "host[:port]" and
// "http://host[:port]" mean plain HTTP, "https://host[:port]" TLS. Both clients take the scheme,
// host and port from here, so they agree on what an address means.
struct ServiceAddress {
  bool secure = false;
  std::string host;  // a name or an address; an IPv6 address keeps its brackets
  int port = 0;      // as given, else 443 or 80
  std::string path;  // from the first '/' after the host on; may be empty

  // The host names this computer itself ("localhost", 127.0.0.0/8, [::1]): nothing sent to it
  // crosses a network.
  bool loopback() const;
  // Credentials sent to this address can be read on the way.
  bool exposes_password() const { return !secure && !loopback(); }
};

// nullopt, with `error` saying why when given, for another scheme, an empty host or a port that
// is not a number from 1 to 65535.
std::optional<ServiceAddress> ParseServiceAddress(std::string_view text,
                                                  std::string* error = nullptr);

enum class FetchStatus {
  kOk,
  kCouldNotConnect,
  kTimedOut,
  kHttpError,  // the server answered with a status other than 2xx
  kTruncated,  // the connection ended before the announced body was complete
  kDropped,    // the connection was closed with no (complete) answer
  kLocalWriteFailed,
  kUntrustedCertificate,  // the TLS check of the service failed; nothing of the request was sent
  kTooLarge,              // the body is larger than the request's limit
  kFailed,                // anything else the transfer reported
};

// Why a service's certificate failed its check.
enum class CertificateProblem {
  kNone,
  kUnknownAuthority,       // no authority this computer trusts signed it (self-signed, private)
  kWrongName,              // made out for another host than the address names
  kExpired,                // out of its validity dates
  kAuthorityFileUnusable,  // an added authority file cannot be read or holds no certificate
  kOther,
};

struct FetchResult {
  FetchStatus status = FetchStatus::kFailed;
  long http_status = 0;
  std::uint64_t bytes = 0;
  std::string detail;            // the transfer library's words, for log lines
  long retry_after_seconds = 0;  // how long the service asked to wait (Retry-After), 0: not said
  CertificateProblem certificate = CertificateProblem::kNone;
  std::string redirected_to;  // where a 3xx answer pointed; never followed
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

// The data set address (with its scheme, or "http://" put in front when it has none) + remote
// path, a backslash in the path becoming '/' and each part of the path percent-encoded
// ("BRK B" -> "BRK%20B").
std::string ServiceUrl(std::string_view data_set_url, std::string_view remote_path);

// The system's client, chosen when the program is built: libcurl's on Linux, WinHTTP's on Windows.
std::unique_ptr<HttpClient> MakeHttpClient();

// The system's client as a value, for those who own one for their whole life.
class SystemHttpClient final : public HttpClient {
 public:
  SystemHttpClient();
  ~SystemHttpClient() override;
  FetchResult FetchToFile(const FetchRequest& request, const std::string& local_path) override;
  std::unique_ptr<FetchPool> OpenPool(int connections) override;

 private:
  std::unique_ptr<HttpClient> client_;
};

// The libcurl client (not on Windows). One handle is kept, so a run reuses its connection.
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
