#include "core/platform/http.h"

#include <curl/curl.h>

#include <mutex>

#include "core/platform/files.h"

namespace corvanet {

namespace {

void GlobalInitOnce() {
  static std::once_flag once;
  std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
}

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
      return "HTTP " + std::to_string(http_status);
    case FetchStatus::kTruncated:
      return "body cut short";
    case FetchStatus::kDropped:
      return "connection dropped";
    case FetchStatus::kLocalWriteFailed:
      return "could not write the local file: " + detail;
    case FetchStatus::kFailed:
      break;
  }
  return "transfer failed: " + detail;
}

std::string ServiceUrl(std::string_view data_set_url, std::string_view remote_path) {
  GlobalInitOnce();
  std::string url = "http://";
  url += data_set_url;
  // Each part of the path is escaped on its own: a symbol with a blank, '#', '?' or '%' must reach
  // the service as that symbol's file, not as a broken URL or another file.
  std::size_t start = 0;
  for (;;) {
    const std::size_t end = remote_path.find_first_of("/\\", start);
    const std::string_view part = remote_path.substr(start, end - start);
    if (!part.empty()) {
      char* escaped = curl_easy_escape(nullptr, part.data(), static_cast<int>(part.size()));
      if (escaped != nullptr) {
        url += escaped;
        curl_free(escaped);
      }
    }
    if (end == std::string_view::npos) break;
    url += '/';
    start = end + 1;
  }
  return url;
}

CurlHttpClient::CurlHttpClient() {
  GlobalInitOnce();
  handle_ = curl_easy_init();
}

CurlHttpClient::~CurlHttpClient() {
  if (handle_ != nullptr) curl_easy_cleanup(static_cast<CURL*>(handle_));
}

FetchResult CurlHttpClient::FetchToFile(const FetchRequest& request,
                                        const std::string& local_path) {
  FetchResult result;
  auto* curl = static_cast<CURL*>(handle_);
  if (curl == nullptr) {
    result.detail = "no transfer handle";
    return result;
  }
  AtomicFileWriter writer(local_path);
  if (!writer.is_open()) {
    result.status = FetchStatus::kLocalWriteFailed;
    result.detail = local_path + ": " + writer.error();
    return result;
  }

  char error_text[CURL_ERROR_SIZE] = {};
  // Options of the previous request stay on a reused handle; reset and set all of them again.
  curl_easy_reset(curl);
  curl_easy_setopt(curl, CURLOPT_URL, request.url.c_str());
  curl_easy_setopt(curl, CURLOPT_HTTPAUTH, static_cast<long>(CURLAUTH_BASIC));
  curl_easy_setopt(curl, CURLOPT_USERNAME, request.user.c_str());
  curl_easy_setopt(curl, CURLOPT_PASSWORD, request.password.c_str());
  curl_easy_setopt(curl, CURLOPT_TIMEOUT, request.timeout_seconds);
  curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT, request.timeout_seconds);
  curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(curl, CURLOPT_USERAGENT, "Corvanet/5.1");
  curl_easy_setopt(curl, CURLOPT_ERRORBUFFER, error_text);
  curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, &WriteToFile);
  curl_easy_setopt(curl, CURLOPT_WRITEDATA, &writer);

  const CURLcode code = curl_easy_perform(curl);
  curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &result.http_status);
  curl_off_t bytes = 0;
  curl_easy_getinfo(curl, CURLINFO_SIZE_DOWNLOAD_T, &bytes);
  result.bytes = static_cast<std::uint64_t>(bytes);
  curl_easy_setopt(curl, CURLOPT_ERRORBUFFER, nullptr);
  result.status = StatusFor(code);
  if (code == CURLE_WRITE_ERROR) {
    result.detail = local_path + ": " + writer.error();
  } else if (code != CURLE_OK) {
    result.detail = error_text[0] != '\0' ? error_text : curl_easy_strerror(code);
  } else if (result.http_status < 200 || result.http_status > 299) {
    result.status = FetchStatus::kHttpError;
  }
  if (result.ok() && !writer.Commit()) {
    result.status = FetchStatus::kLocalWriteFailed;
    result.detail = local_path + ": " + writer.error();
  }
  return result;
}

}  // namespace corvanet
