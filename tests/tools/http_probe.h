#pragma once
// A bare libcurl GET for the tests that need more than the program's client shows: the response
// headers, the body of an error answer, and whether a connection was reused.
#include <string>

namespace corvanet::test {

struct Reply {
  int curl_code = 0;  // CURLcode
  long status = 0;
  long new_connections = 0;
  std::string headers;
  std::string body;
};

class HttpProbe {
 public:
  HttpProbe();
  ~HttpProbe();
  HttpProbe(const HttpProbe&) = delete;
  HttpProbe& operator=(const HttpProbe&) = delete;

  // Sends no credentials when `user` is empty. The path goes out exactly as given ("/a/../b" and
  // "//" included).
  Reply Get(const std::string& url, const std::string& user = {}, const std::string& password = {});

 private:
  void* handle_;  // CURL*, one per probe so its connection can be reused
};

}  // namespace corvanet::test
