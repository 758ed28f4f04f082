// The libcurl client (Linux and the other POSIX systems).
#include "core/platform/curl_transfer.h"
#include "core/platform/fetch_pool.h"
#include "core/platform/http.h"

namespace corvanet {

std::unique_ptr<HttpClient> MakeHttpClient() {
  return std::make_unique<CurlHttpClient>();
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
  curl::Transfer transfer(request);
  if (!transfer.body.Open(local_path)) {
    result.status = FetchStatus::kLocalWriteFailed;
    result.detail = local_path + ": " + transfer.body.error();
    return result;
  }
  // Options of the previous request stay on a reused handle; reset and set all of them again.
  curl_easy_reset(curl);
  // One handle serves every request of the program's life, whatever authorities each adds.
  curl::SetFetchOptions(curl, transfer, curl::AuthorityCache::kNone);
  const CURLcode code = curl_easy_perform(curl);
  result = curl::ResultOf(curl, code, transfer);
  // The handle outlives the transfer: nothing of it may point into it any more.
  curl_easy_setopt(curl, CURLOPT_ERRORBUFFER, nullptr);
  curl_easy_setopt(curl, CURLOPT_SSL_CTX_DATA, nullptr);
  curl::CommitBody(result, transfer);
  return result;
}

std::unique_ptr<FetchPool> CurlHttpClient::OpenPool(int connections) {
  return std::make_unique<FetchPool>(connections);
}

}  // namespace corvanet
