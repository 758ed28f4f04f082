#include "tools/http_probe.h"

#include <curl/curl.h>

namespace corvanet::test {

namespace {

size_t Append(char* data, size_t size, size_t count, void* user) {
  static_cast<std::string*>(user)->append(data, size * count);
  return size * count;
}

}  // namespace

HttpProbe::HttpProbe() : handle_(curl_easy_init()) {}

HttpProbe::~HttpProbe() {
  curl_easy_cleanup(static_cast<CURL*>(handle_));
}

Reply HttpProbe::Get(const std::string& url, const std::string& user, const std::string& password) {
  auto* curl = static_cast<CURL*>(handle_);
  Reply reply;
  curl_easy_reset(curl);
  curl_easy_setopt(curl, CURLOPT_URL, url.c_str());
  curl_easy_setopt(curl, CURLOPT_PATH_AS_IS, 1L);
  curl_easy_setopt(curl, CURLOPT_TIMEOUT, 20L);
  curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
  if (!user.empty()) {
    curl_easy_setopt(curl, CURLOPT_HTTPAUTH, static_cast<long>(CURLAUTH_BASIC));
    curl_easy_setopt(curl, CURLOPT_USERNAME, user.c_str());
    curl_easy_setopt(curl, CURLOPT_PASSWORD, password.c_str());
  }
  curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, &Append);
  curl_easy_setopt(curl, CURLOPT_WRITEDATA, &reply.body);
  curl_easy_setopt(curl, CURLOPT_HEADERFUNCTION, &Append);
  curl_easy_setopt(curl, CURLOPT_HEADERDATA, &reply.headers);
  reply.curl_code = curl_easy_perform(curl);
  curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &reply.status);
  curl_easy_getinfo(curl, CURLINFO_NUM_CONNECTS, &reply.new_connections);
  return reply;
}

}  // namespace corvanet::test
