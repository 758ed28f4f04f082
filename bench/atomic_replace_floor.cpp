// The least an atomic datafile update can cost: every base copy read and written whole to a
// temporary file beside its destination, which is then renamed over it. The download benchmark
// prints it beside the run and cp, to show how much of the run is the replace itself.
#include <cstdio>
#include <filesystem>
#include <string>

#include "core/platform/files.h"

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: atomic_replace_floor BASE_FOLDER DESTINATION_FOLDER\n");
    return 2;
  }
  const std::filesystem::path base = argv[1];
  const std::string destination = std::string(argv[2]) + "/";
  int files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(base)) {
    const std::string name = entry.path().filename().string();
    if (name.find("-CompositeStats.csv") == std::string::npos) continue;
    if (!corvanet::CopyFileReplacing(entry.path().string(), destination + name)) return 1;
    ++files;
  }
  std::printf("%d files replaced\n", files);
  return 0;
}
