#pragma once
// What the one-at-a-time client and the connection pool share of libcurl: the options of one
// fetch and the reading of its outcome. Included only by the platform's HTTP sources, so no other
// part of the program sees libcurl.
#include <curl/curl.h>

#include <cstdint>

#include "core/platform/atomic_file_writer.h"
#include "core/platform/http.h"

namespace corvanet::curl {

void GlobalInitOnce();

// One fetch under way: the request, where its body goes and how much of it came. Lives at one
// address from SetFetchOptions until the transfer has ended, as libcurl keeps pointers into it.
struct Transfer {
  explicit Transfer(FetchRequest fetch) : request(std::move(fetch)) {}
  Transfer(const Transfer&) = delete;
  Transfer& operator=(const Transfer&) = delete;

  FetchRequest request;
  AtomicFileWriter body;  // opened by the caller
  std::uint64_t received = 0;
  bool over_limit = false;
  std::string unusable_authority_file;  // an added authority file that could not be loaded
  char error_text[CURL_ERROR_SIZE] = {};
};

// Whether the system's authorities, once loaded, serve the next connections too, with the ones a
// request added: only for handles whose requests all add the same.
enum class AuthorityCache { kNone, kShared };

// Sets every option of one GET of the transfer's request on a handle that was reset (a reused
// handle keeps the previous request's options otherwise).
void SetFetchOptions(CURL* handle, Transfer& transfer, AuthorityCache authorities);

// The outcome of a finished transfer as FetchResult says it; a body that is complete and 2xx is
// still only in its temporary file.
FetchResult ResultOf(CURL* handle, CURLcode code, const Transfer& transfer);

// Renames a good body over its target; anything else leaves the target alone.
void CommitBody(FetchResult& result, Transfer& transfer);

}  // namespace corvanet::curl
