#pragma once
// The last step of every fetch, whichever system client made it: a body that arrived whole with a
// 2xx status is renamed over its target; anything else leaves the target alone.
#include <cstdint>
#include <string>

#include "core/platform/atomic_file_writer.h"
#include "core/platform/http.h"

namespace corvanet {

void CommitFetchedBody(FetchResult& result, AtomicFileWriter& body);

// "64 MiB" or "1000 bytes": a body limit as FetchResult's detail of kTooLarge gives it.
std::string BodyLimitText(std::uint64_t bytes);

}  // namespace corvanet
