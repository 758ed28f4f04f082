#include "core/platform/http.h"

#include <algorithm>

#include "core/platform/fetch_pool.h"
#include "core/platform/fetched_body.h"
#include "core/platform/text.h"

namespace corvanet {

namespace {

constexpr std::string_view kSchemeMark = "://";

bool AllDigits(std::string_view text) {
  return !text.empty() &&
         std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

bool IsIpv4Loopback(std::string_view host) {
  if (!StartsWith(host, "127.")) return false;
  int parts = 0;
  for (std::size_t start = 0; start <= host.size(); ++parts) {
    const std::size_t end = std::min(host.find('.', start), host.size());
    int value = 0;
    if (!AllDigits(host.substr(start, end - start)) ||
        !ParseInteger(host.substr(start, end - start), value) || value > 255) {
      return false;
    }
    start = end + 1;
  }
  return parts == 4;
}

std::string CertificateText(const FetchResult& result) {
  const std::string why = result.detail.empty() ? "" : " (" + result.detail + ")";
  std::string text = "the data service's certificate is not trusted: ";
  switch (result.certificate) {
    case CertificateProblem::kUnknownAuthority:
      return text + "no authority this computer trusts signed it" + why +
             "; if the service has an authority of its own, name that authority's certificate "
             "(a PEM file) in the setting CAFile or in CORVANET_CA_FILE";
    case CertificateProblem::kWrongName:
      return text + "it is made out for another host than the address names" + why +
             "; put the host name the certificate names into IPAddress";
    case CertificateProblem::kExpired:
      return text + "it has expired or is not valid yet" + why +
             "; the service must renew it, unless this computer's clock is wrong";
    case CertificateProblem::kAuthorityFileUnusable:
      return text + "the added authority file cannot be read or holds no certificate" + why +
             "; correct the setting CAFile or CORVANET_CA_FILE";
    case CertificateProblem::kNone:
    case CertificateProblem::kOther:
      break;
  }
  return text + (result.detail.empty() ? "the TLS check failed" : result.detail);
}

std::string RedirectText(const FetchResult& result) {
  const std::string status = "HTTP " + std::to_string(result.http_status);
  if (result.redirected_to.empty()) return status + " (a redirect, not followed)";
  if (StartsWith(ToLower(result.redirected_to), "http://")) {
    return status + " (the data service redirects to a plain-HTTP address, " +
           result.redirected_to + "; refused, the password would be sent unencrypted)";
  }
  return status + " (the data service redirects to " + result.redirected_to +
         "; redirects are not followed: if the service has moved, put its new address into "
         "IPAddress)";
}

}  // namespace

bool ServiceAddress::loopback() const {
  const std::string name = ToLower(host);
  return name == "localhost" || name == "[::1]" || IsIpv4Loopback(name);
}

std::optional<ServiceAddress> ParseServiceAddress(std::string_view text, std::string* error) {
  const auto fail = [error](std::string why) -> std::optional<ServiceAddress> {
    if (error != nullptr) *error = std::move(why);
    return std::nullopt;
  };
  text = Trim(text);
  ServiceAddress address;
  if (const std::size_t mark = text.find(kSchemeMark); mark != std::string_view::npos) {
    const std::string scheme = ToLower(text.substr(0, mark));
    if (scheme != "http" && scheme != "https") {
      return fail("the address must start with https:// or http://, not " + scheme + "://");
    }
    address.secure = scheme == "https";
    text.remove_prefix(mark + kSchemeMark.size());
  }
  const std::size_t slash = text.find('/');
  std::string_view authority = text.substr(0, slash);
  if (slash != std::string_view::npos) address.path = std::string(text.substr(slash));
  if (authority.find('@') != std::string_view::npos) {
    return fail("the address holds a user name; give it as user name and password instead");
  }
  // An IPv6 address is written in brackets, its colons inside them.
  std::size_t host_end = std::min(authority.find(':'), authority.size());
  if (StartsWith(authority, "[")) {
    host_end = authority.find(']');
    if (host_end == std::string_view::npos) return fail("the address has '[' without ']'");
    ++host_end;
  }
  address.host = std::string(authority.substr(0, host_end));
  if (address.host.empty() || address.host == "[]") return fail("the address names no host");
  const std::string_view rest = authority.substr(host_end);
  address.port = address.secure ? 443 : 80;
  if (!rest.empty()) {
    int port = 0;
    const std::string_view port_text = rest.substr(1);
    if (rest.front() != ':' || !AllDigits(port_text) || !ParseInteger(port_text, port) ||
        port < 1 || port > 65535) {
      return fail("the port must be a number from 1 to 65535");
    }
    address.port = port;
  }
  return address;
}

bool FetchResult::transient() const {
  switch (status) {
    case FetchStatus::kCouldNotConnect:
    case FetchStatus::kTimedOut:
    case FetchStatus::kTruncated:
    case FetchStatus::kDropped:
    case FetchStatus::kFailed:
      return true;
    case FetchStatus::kHttpError:
      return http_status == 429 || http_status >= 500;
    case FetchStatus::kOk:
    case FetchStatus::kLocalWriteFailed:
    case FetchStatus::kUntrustedCertificate:
    case FetchStatus::kTooLarge:
      return false;
  }
  return false;
}

std::string FetchResult::Describe() const {
  switch (status) {
    case FetchStatus::kOk:
      return "OK";
    case FetchStatus::kCouldNotConnect:
      return "could not connect (the data service cannot be reached; check its address and the "
             "network)";
    case FetchStatus::kTimedOut:
      return "timed out (the data service did not answer in time)";
    case FetchStatus::kHttpError:
      if (http_status == 401 || http_status == 403) {
        return "HTTP " + std::to_string(http_status) +
               " (the data service refused the user name and password)";
      }
      if (http_status >= 300 && http_status <= 399) return RedirectText(*this);
      return "HTTP " + std::to_string(http_status);
    case FetchStatus::kTruncated:
      return "body cut short";
    case FetchStatus::kDropped:
      return "connection dropped";
    case FetchStatus::kLocalWriteFailed:
      return "could not write the local file: " + detail;
    case FetchStatus::kUntrustedCertificate:
      return CertificateText(*this);
    case FetchStatus::kTooLarge:
      return "the body is larger than " + detail +
             ", the limit of the setting MaxDownloadMB; nothing of it was kept";
    case FetchStatus::kFailed:
      break;
  }
  return "transfer failed: " + detail;
}

namespace {

// Every byte but the unreserved ones (letters, digits, "-._~") as %XX.
void AppendPercentEncoded(std::string& url, std::string_view part) {
  static constexpr char kHex[] = "0123456789ABCDEF";
  for (const char c : part) {
    const auto byte = static_cast<unsigned char>(c);
    if ((byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z') ||
        (byte >= '0' && byte <= '9') || c == '-' || c == '.' || c == '_' || c == '~') {
      url += c;
    } else {
      url += '%';
      url += kHex[byte >> 4];
      url += kHex[byte & 0xf];
    }
  }
}

}  // namespace

std::string ServiceUrl(std::string_view data_set_url, std::string_view remote_path) {
  std::string url;
  if (data_set_url.find(kSchemeMark) == std::string_view::npos) url = "http://";
  url += data_set_url;
  // Each part of the path is escaped on its own: a symbol with a blank, '#', '?' or '%' must reach
  // the service as that symbol's file, not as a broken URL or another file.
  std::size_t start = 0;
  for (;;) {
    const std::size_t end = remote_path.find_first_of("/\\", start);
    const std::string_view part = remote_path.substr(start, end - start);
    AppendPercentEncoded(url, part);
    if (end == std::string_view::npos) break;
    url += '/';
    start = end + 1;
  }
  return url;
}

std::unique_ptr<FetchPool> HttpClient::OpenPool(int /*connections*/) {
  return nullptr;
}

std::string BodyLimitText(std::uint64_t bytes) {
  if (bytes % kMiB == 0) return std::to_string(bytes / kMiB) + " MiB";
  return std::to_string(bytes) + " bytes";
}

void CommitFetchedBody(FetchResult& result, AtomicFileWriter& body) {
  if (result.status == FetchStatus::kLocalWriteFailed) {
    result.detail = body.target() + ": " + body.error();
  }
  if (!result.ok()) {
    body.Discard();
    return;
  }
  if (!body.Commit()) {
    result.status = FetchStatus::kLocalWriteFailed;
    result.detail = body.target() + ": " + body.error();
  }
}

SystemHttpClient::SystemHttpClient() : client_(MakeHttpClient()) {}

SystemHttpClient::~SystemHttpClient() = default;

FetchResult SystemHttpClient::FetchToFile(const FetchRequest& request,
                                          const std::string& local_path) {
  return client_->FetchToFile(request, local_path);
}

std::unique_ptr<FetchPool> SystemHttpClient::OpenPool(int connections) {
  return client_->OpenPool(connections);
}

}  // namespace corvanet
