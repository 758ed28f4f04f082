#include "core/platform/curl_transfer.h"

#include <algorithm>
#include <mutex>

namespace corvanet::curl {

namespace {

constexpr long kConnectTimeoutSeconds = 10;

size_t WriteToFile(char* data, size_t size, size_t count, void* user) {
  auto* writer = static_cast<AtomicFileWriter*>(user);
  writer->Write(std::string_view(data, size * count));
  // A failed write (a full disk) ends the transfer: the rest of the body has nowhere to go.
  return writer->error().empty() ? size * count : 0;
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

void SetFetchOptions(CURL* handle, const FetchRequest& request, AtomicFileWriter& body,
                     char* error_text) {
  error_text[0] = '\0';
  curl_easy_setopt(handle, CURLOPT_URL, request.url.c_str());
  curl_easy_setopt(handle, CURLOPT_HTTPAUTH, static_cast<long>(CURLAUTH_BASIC));
  curl_easy_setopt(handle, CURLOPT_USERNAME, request.user.c_str());
  curl_easy_setopt(handle, CURLOPT_PASSWORD, request.password.c_str());
  curl_easy_setopt(handle, CURLOPT_TIMEOUT, request.timeout_seconds);
  // A service that cannot be reached is known in seconds; only an answer may take the whole time.
  curl_easy_setopt(handle, CURLOPT_CONNECTTIMEOUT,
                   std::min(request.timeout_seconds, kConnectTimeoutSeconds));
  curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(handle, CURLOPT_USERAGENT, "Corvanet/5.1");
  curl_easy_setopt(handle, CURLOPT_ERRORBUFFER, error_text);
  curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, &WriteToFile);
  curl_easy_setopt(handle, CURLOPT_WRITEDATA, &body);
}

FetchResult ResultOf(CURL* handle, CURLcode code, const char* error_text) {
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
  }
  return result;
}

void CommitBody(FetchResult& result, AtomicFileWriter& body) {
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

}  // namespace corvanet::curl
