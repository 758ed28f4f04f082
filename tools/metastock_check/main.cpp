// corvanet-metastock-check PRICE_FOLDER METASTOCK_FOLDER
//
// Checks a MetaStock folder against the ten-column price files it was made from: every price file
// of PRICE_FOLDER must have its security listed in METASTOCK_FOLDER's index, and that security's
// data file must be byte for byte the file its price file converts to (every bar, every value).
// Prints one line for the folder, or one per fault; exits 1 on any fault, 2 on a usage error.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "pxfiles/data_file.h"
#include "pxfiles/file_io.h"
#include "pxfiles/index_files.h"
#include "pxfiles/index_records.h"
#include "pxfiles/price_file.h"

namespace {

namespace fs = std::filesystem;
using namespace corvanet::pxfiles;

// The price files of the folder, in name order so the report reads the same on every run.
std::vector<std::string> PriceFiles(const std::string& folder) {
  std::vector<std::string> files;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
    if (entry.is_regular_file()) files.push_back(entry.path().string());
  }
  std::sort(files.begin(), files.end());
  return files;
}

// "" when the security of `price_path` is in the folder with exactly the price file's bars.
std::string CheckSecurity(const std::string& price_path, const std::string& folder,
                          const IndexFiles& index, std::size_t& bars) {
  PriceFile price;
  std::string error;
  if (!ReadPriceFile(price_path, price, error)) return "unreadable price file: " + error;
  bars = price.data.bars();
  const std::string symbol = price.symbol.substr(0, kSymbolLength);
  const unsigned number = index.FileNumberOf(symbol);
  if (number == 0) return symbol + " is not listed in " + folder;
  const std::string data_path = JoinPath(folder, DataFileName(number));
  std::string stored;
  if (ReadSmallFile(data_path, (kMaxBars + 1) * kRecordLength, stored, error) !=
      ReadResult::kRead) {
    return data_path + " cannot be read" + (error.empty() ? "" : ": " + error);
  }
  const std::string_view expected = price.data.Finish();
  if (stored == expected) return "";
  const std::size_t stored_bars = stored.size() / kRecordLength - (stored.empty() ? 0 : 1);
  return data_path + " holds " + std::to_string(stored_bars) + " bars, not the " +
         std::to_string(bars) + " of the price file" +
         (stored.size() == expected.size() ? " (same count, other values)" : "");
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fputs("usage: corvanet-metastock-check PRICE_FOLDER METASTOCK_FOLDER\n", stderr);
    return 2;
  }
  const std::string price_folder = argv[1];
  const std::string folder = argv[2];
  IndexFiles index;
  std::string error;
  if (!index.Load(folder, error)) {
    std::printf("%s: damaged index: %s\n", folder.c_str(), error.c_str());
    return 1;
  }
  std::size_t securities = 0;
  std::size_t all_bars = 0;
  int faults = 0;
  for (const std::string& price_path : PriceFiles(price_folder)) {
    std::size_t bars = 0;
    const std::string fault = CheckSecurity(price_path, folder, index, bars);
    if (!fault.empty()) {
      std::printf("%s: %s\n", price_path.c_str(), fault.c_str());
      ++faults;
      continue;
    }
    ++securities;
    all_bars += bars;
  }
  std::printf("%s: %zu securities, %zu bars, as their price files hold them%s\n", folder.c_str(),
              securities, all_bars, faults == 0 ? "" : " (and faults above)");
  return faults == 0 && securities > 0 ? 0 : 1;
}
