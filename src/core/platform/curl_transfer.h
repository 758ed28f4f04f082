#pragma once
// What the one-at-a-time client and the connection pool share of libcurl: the options of one
// fetch and the reading of its outcome. Included only by the platform's HTTP sources, so no other
// part of the program sees libcurl.
#include <curl/curl.h>

#include "core/platform/files.h"
#include "core/platform/http.h"

namespace corvanet::curl {

void GlobalInitOnce();

// Sets every option of one GET of `request` on a handle that was reset (a reused handle keeps the
// previous request's options otherwise); the body goes to `body`, libcurl's words to
// `error_text` (CURL_ERROR_SIZE bytes, kept alive until the transfer ends).
void SetFetchOptions(CURL* handle, const FetchRequest& request, AtomicFileWriter& body,
                     char* error_text);

// The outcome of a finished transfer as FetchResult says it; a body that is complete and 2xx is
// still only in its temporary file.
FetchResult ResultOf(CURL* handle, CURLcode code, const char* error_text);

// Renames a good body over its target; anything else leaves the target alone.
void CommitBody(FetchResult& result, AtomicFileWriter& body);

}  // namespace corvanet::curl
