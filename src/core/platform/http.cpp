#include "core/platform/http.h"

#include "core/platform/curl_transfer.h"
#include "core/platform/fetch_pool.h"

namespace corvanet {

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
  curl::GlobalInitOnce();
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
  curl::GlobalInitOnce();
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
  curl::SetFetchOptions(curl, request, writer, error_text);
  const CURLcode code = curl_easy_perform(curl);
  result = curl::ResultOf(curl, code, error_text);
  curl_easy_setopt(curl, CURLOPT_ERRORBUFFER, nullptr);
  curl::CommitBody(result, writer);
  return result;
}

std::unique_ptr<FetchPool> HttpClient::OpenPool(int /*connections*/) {
  return nullptr;
}

std::unique_ptr<FetchPool> CurlHttpClient::OpenPool(int connections) {
  return std::make_unique<FetchPool>(connections);
}

}  // namespace corvanet
