#include "core/platform/curl_transfer.h"

#include <openssl/err.h>
#include <openssl/ssl.h>
#include <openssl/x509_vfy.h>

#include <algorithm>
#include <mutex>

#include "core/platform/fetched_body.h"

namespace corvanet::curl {

namespace {

constexpr long kConnectTimeoutSeconds = 10;

size_t WriteToFile(char* data, size_t size, size_t count, void* user) {
  auto& transfer = *static_cast<Transfer*>(user);
  const std::size_t bytes = size * count;
  transfer.received += bytes;
  // A body without an announced length is counted as it comes; one that announces too much is
  // refused by libcurl before its first byte.
  const std::uint64_t limit = transfer.request.max_body_bytes;
  if (limit != 0 && transfer.received > limit) {
    transfer.over_limit = true;
    return 0;
  }
  transfer.body.Write(std::string_view(data, bytes));
  // A failed write (a full disk) ends the transfer: the rest of the body has nowhere to go.
  return transfer.body.error().empty() ? bytes : 0;
}

// Called by libcurl on each new TLS connection, after it has loaded the system's authorities:
// the request's own authority files are added to them, never put in their place.
CURLcode AddAuthorities(CURL* /*handle*/, void* ssl_context, void* user) {
  auto& transfer = *static_cast<Transfer*>(user);
  X509_STORE* store = SSL_CTX_get_cert_store(static_cast<SSL_CTX*>(ssl_context));
  for (const std::string& file : transfer.request.extra_authorities) {
    if (X509_STORE_load_file(store, file.c_str()) != 1) {
      ERR_clear_error();
      transfer.unusable_authority_file = file;
      return CURLE_SSL_CACERT_BADFILE;
    }
  }
  return CURLE_OK;
}

CertificateProblem ProblemOf(long verify_result) {
  switch (verify_result) {
    // libcurl checks the host name before it reads the chain's result, which then stays as it
    // was set before the handshake (unspecified); either way the name is what failed.
    case X509_V_OK:
    case X509_V_ERR_UNSPECIFIED:
      return CertificateProblem::kWrongName;
    case X509_V_ERR_HOSTNAME_MISMATCH:
    case X509_V_ERR_IP_ADDRESS_MISMATCH:
      return CertificateProblem::kWrongName;
    case X509_V_ERR_CERT_HAS_EXPIRED:
    case X509_V_ERR_CERT_NOT_YET_VALID:
      return CertificateProblem::kExpired;
    case X509_V_ERR_DEPTH_ZERO_SELF_SIGNED_CERT:
    case X509_V_ERR_SELF_SIGNED_CERT_IN_CHAIN:
    case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT:
    case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY:
    case X509_V_ERR_UNABLE_TO_VERIFY_LEAF_SIGNATURE:
    case X509_V_ERR_CERT_UNTRUSTED:
      return CertificateProblem::kUnknownAuthority;
    default:
      return CertificateProblem::kOther;
  }
}

FetchStatus StatusFor(CURLcode code) {
  switch (code) {
    case CURLE_OK:
      return FetchStatus::kOk;
    case CURLE_COULDNT_CONNECT:
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_RESOLVE_PROXY:
      return FetchStatus::kCouldNotConnect;
    case CURLE_OPERATION_TIMEDOUT:
      return FetchStatus::kTimedOut;
    case CURLE_PARTIAL_FILE:
      return FetchStatus::kTruncated;
    case CURLE_GOT_NOTHING:
    case CURLE_RECV_ERROR:
    case CURLE_SEND_ERROR:
      return FetchStatus::kDropped;
    case CURLE_WRITE_ERROR:
      return FetchStatus::kLocalWriteFailed;
    default:
      return FetchStatus::kFailed;
  }
}

}  // namespace

void GlobalInitOnce() {
  static std::once_flag once;
  std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
}

void SetFetchOptions(CURL* handle, Transfer& transfer, AuthorityCache authorities) {
  const FetchRequest& request = transfer.request;
  transfer.error_text[0] = '\0';
  transfer.received = 0;
  transfer.over_limit = false;
  curl_easy_setopt(handle, CURLOPT_URL, request.url.c_str());
  // Only the web's two schemes, and no redirect followed: an answer that points elsewhere fails
  // with its status, so the password never goes where the address did not name.
  curl_easy_setopt(handle, CURLOPT_PROTOCOLS_STR, "http,https");
  curl_easy_setopt(handle, CURLOPT_FOLLOWLOCATION, 0L);
  // libcurl's defaults, set all the same: nothing in the program may turn them off.
  curl_easy_setopt(handle, CURLOPT_SSL_VERIFYPEER, 1L);
  curl_easy_setopt(handle, CURLOPT_SSL_VERIFYHOST, 2L);
  // The system's authorities come from its bundle file alone, not also from the folder of hashed
  // links the distribution builds from the same certificates: libcurl keeps a store loaded from a
  // file for the next connections, but one with a folder is loaded again for each, and loading
  // the bundle costs more than the handshake itself.
  curl_easy_setopt(handle, CURLOPT_CAPATH, nullptr);
  if (!request.extra_authorities.empty()) {
    curl_easy_setopt(handle, CURLOPT_SSL_CTX_FUNCTION, &AddAuthorities);
    curl_easy_setopt(handle, CURLOPT_SSL_CTX_DATA, &transfer);
    // libcurl keeps the authorities it loaded for the next connections of the same transfer
    // engine, the added ones with them: only where every request adds the same (a pool, which
    // serves one run) is that allowed; elsewhere each connection loads its own.
    if (authorities == AuthorityCache::kNone) {
      curl_easy_setopt(handle, CURLOPT_CA_CACHE_TIMEOUT, 0L);
    }
  }
  curl_easy_setopt(handle, CURLOPT_HTTPAUTH, static_cast<long>(CURLAUTH_BASIC));
  curl_easy_setopt(handle, CURLOPT_USERNAME, request.user.c_str());
  curl_easy_setopt(handle, CURLOPT_PASSWORD, request.password.c_str());
  curl_easy_setopt(handle, CURLOPT_TIMEOUT, request.timeout_seconds);
  // A service that cannot be reached is known in seconds; only an answer may take the whole time.
  curl_easy_setopt(handle, CURLOPT_CONNECTTIMEOUT,
                   std::min(request.timeout_seconds, kConnectTimeoutSeconds));
  curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
  // A body that stops coming fails long before the time-out of the whole request.
  curl_easy_setopt(handle, CURLOPT_LOW_SPEED_LIMIT, 1L);
  curl_easy_setopt(handle, CURLOPT_LOW_SPEED_TIME, request.stall_seconds);
  if (request.max_body_bytes != 0) {
    curl_easy_setopt(handle, CURLOPT_MAXFILESIZE_LARGE,
                     static_cast<curl_off_t>(request.max_body_bytes));
  }
  curl_easy_setopt(handle, CURLOPT_USERAGENT, "Corvanet/5.1");
  curl_easy_setopt(handle, CURLOPT_ERRORBUFFER, transfer.error_text);
  curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, &WriteToFile);
  curl_easy_setopt(handle, CURLOPT_WRITEDATA, &transfer);
}

FetchResult ResultOf(CURL* handle, CURLcode code, const Transfer& transfer) {
  const char* error_text = transfer.error_text;
  FetchResult result;
  curl_easy_getinfo(handle, CURLINFO_RESPONSE_CODE, &result.http_status);
  curl_off_t bytes = 0;
  curl_easy_getinfo(handle, CURLINFO_SIZE_DOWNLOAD_T, &bytes);
  result.bytes = static_cast<std::uint64_t>(bytes);
  result.status = StatusFor(code);
  curl_off_t retry_after = 0;
  if (curl_easy_getinfo(handle, CURLINFO_RETRY_AFTER, &retry_after) == CURLE_OK) {
    result.retry_after_seconds = static_cast<long>(retry_after);
  }
  if (code != CURLE_OK) {
    result.detail = error_text[0] != '\0' ? error_text : curl_easy_strerror(code);
  } else if (result.http_status < 200 || result.http_status > 299) {
    result.status = FetchStatus::kHttpError;
    const char* location = nullptr;
    if (curl_easy_getinfo(handle, CURLINFO_REDIRECT_URL, &location) == CURLE_OK &&
        location != nullptr) {
      result.redirected_to = location;
    }
  }
  if (code == CURLE_FILESIZE_EXCEEDED || transfer.over_limit) {
    result.status = FetchStatus::kTooLarge;
    result.detail = BodyLimitText(transfer.request.max_body_bytes);
  } else if (code == CURLE_PEER_FAILED_VERIFICATION) {
    long verify_result = X509_V_OK;
    curl_easy_getinfo(handle, CURLINFO_SSL_VERIFYRESULT, &verify_result);
    result.status = FetchStatus::kUntrustedCertificate;
    result.certificate = ProblemOf(verify_result);
  } else if (code == CURLE_SSL_CACERT_BADFILE) {
    result.status = FetchStatus::kUntrustedCertificate;
    result.certificate = CertificateProblem::kAuthorityFileUnusable;
    if (!transfer.unusable_authority_file.empty()) result.detail = transfer.unusable_authority_file;
  }
  return result;
}

void CommitBody(FetchResult& result, Transfer& transfer) {
  CommitFetchedBody(result, transfer.body);
}

}  // namespace corvanet::curl
