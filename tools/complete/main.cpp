// Complete.exe: the last line of a converter batch file. It leaves a non-zero number in
// Complete.txt in the folder it runs in, which tells the waiting run that the batch has finished.
// Written atomically, so the run never reads a half-written file.
#include <cstdio>
#include <string>

#include "core/platform/files.h"

int main() {
  const std::string path = "Complete.txt";
  if (!corvanet::WriteWholeFile(path, "1" + std::string(corvanet::kLineEnd))) {
    std::fprintf(stderr, "Complete.exe: cannot write %s in %s\n", path.c_str(),
                 corvanet::CurrentDirectory().c_str());
    return 1;
  }
  return 0;
}
