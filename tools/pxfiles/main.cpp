// PxFiles: converts one ten-column price file into a MetaStock folder. Called once per price
// file from the batch files a run writes, so it starts with as little as it can: no iostreams,
// no locale, three reads of the index files and one write per file it replaces.
//
// Exit status: 0 converted, 1 nothing converted (the reason is in MSXlog.txt and on stderr),
// 2 usage error.

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>
#include <string_view>

#include "pxfiles/command_line.h"
#include "pxfiles/converter.h"
#include "pxfiles/file_io.h"
#include "pxfiles/system_io.h"

namespace {

using namespace corvanet::pxfiles;

// MSXlog.txt in the program's folder, which the batch runner names; else the current folder.
std::string LogPath() {
  const char* folder = std::getenv("CORVANET_PROGRAM_DIRECTORY");
  return folder != nullptr && *folder != '\0' ? JoinPath(folder, "MSXlog.txt") : "MSXlog.txt";
}

// One line in MSXlog.txt, starting with the local date and time.
void Log(std::string_view message) {
  const std::time_t now = std::time(nullptr);
  const std::tm local = system::LocalTime(now);
  char stamp[32];
  std::strftime(stamp, sizeof stamp, "%Y-%m-%d %H:%M:%S ", &local);
  const std::string path = LogPath();
  if (!AppendLine(path, std::string(stamp).append(message))) {
    const std::string warning = "PxFiles: cannot write " + path + ": " + SystemError() + "\n";
    std::fputs(warning.c_str(), stderr);
  }
}

int Fail(int status, const std::string& message) {
  Log("Error: " + message);
  std::fputs(("PxFiles: " + message + "\n").c_str(), stderr);
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  std::string error;
  switch (ParseCommandLine(argc, argv, options, error)) {
    case Parsed::kHelp:
      std::fputs(kUsage.data(), stdout);
      return 0;
    case Parsed::kUsageError: {
      const int status = Fail(2, error);
      std::fputs(kUsage.data(), stderr);
      return status;
    }
    case Parsed::kConvert:
      break;
  }
  Outcome outcome;
  if (!Convert(options, outcome, error)) return Fail(1, options.price_file + ": " + error);
  Log(outcome.symbol + ": " + std::to_string(outcome.bars) + " bars written to " +
      options.output_folder + " as " + outcome.data_file + outcome.notes);
  return 0;
}
