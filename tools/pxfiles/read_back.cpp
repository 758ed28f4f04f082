#include "pxfiles/read_back.h"

#include "pxfiles/data_file.h"
#include "pxfiles/file_io.h"

namespace corvanet::pxfiles {

bool FolderReadBack::Load(const std::string& folder, std::string& error) {
  folder_ = folder;
  return index_.Load(folder, error);
}

std::optional<std::size_t> FolderReadBack::Bars(std::string_view symbol, std::string& error) const {
  symbol = symbol.substr(0, kSymbolLength);
  const unsigned number = index_.FileNumberOf(symbol);
  if (number == 0) {
    error = "not listed in " + folder_;
    return std::nullopt;
  }
  const std::string path = JoinPath(folder_, DataFileName(number));
  std::string image;
  constexpr std::size_t kLimit = (kMaxBars + 1) * kRecordLength;
  switch (ReadSmallFile(path, kLimit, image, error)) {
    case ReadResult::kMissing:
      error = path + " is missing";
      return std::nullopt;
    case ReadResult::kFailed:
      return std::nullopt;
    case ReadResult::kRead:
      break;
  }
  if (image.size() < kRecordLength) {
    error = path + " holds no header";
    return std::nullopt;
  }
  const auto byte = [&image](std::size_t i) { return static_cast<unsigned char>(image[i]); };
  const std::size_t records = byte(2) | (static_cast<std::size_t>(byte(3)) << 8);
  if (records == 0 || image.size() != records * kRecordLength) {
    error = path + " does not hold the " + std::to_string(records) + " records its header counts";
    return std::nullopt;
  }
  return records - 1;
}

}  // namespace corvanet::pxfiles
