#pragma once
// The last step of every fetch, whichever system client made it: a body that arrived whole with a
// 2xx status is renamed over its target; anything else leaves the target alone.
#include "core/platform/atomic_file_writer.h"
#include "core/platform/http.h"

namespace corvanet {

void CommitFetchedBody(FetchResult& result, AtomicFileWriter& body);

}  // namespace corvanet
