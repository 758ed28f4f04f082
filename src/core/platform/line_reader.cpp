#include "core/platform/line_reader.h"

#include <cstring>
#include <utility>

namespace corvanet {

namespace {

constexpr std::size_t kChunk = 64 * 1024;

}  // namespace

bool LineReader::Open(const std::string& path) {
  Close();
  file_ = OpenForReading(path);
  if (file_ < 0) return false;
  if (!buffer_) {
    buffer_ = std::make_unique_for_overwrite<char[]>(kChunk);
    capacity_ = kChunk;
  }
  begin_ = end_ = 0;
  file_offset_ = 0;
  eof_ = failed_ = too_long_ = false;
  return true;
}

void LineReader::SkipTo(std::uint64_t offset) {
  begin_ = end_ = 0;
  file_offset_ = offset;
  eof_ = !is_open();
}

void LineReader::Close() {
  CloseFile(file_);
  file_ = -1;
  begin_ = end_ = 0;
  eof_ = true;
}

bool LineReader::Fill() {
  if (eof_ || file_ < 0) return false;
  // Keep the unread tail, then read behind it; grow when one line fills the whole buffer.
  if (begin_ > 0) {
    std::memmove(buffer_.get(), buffer_.get() + begin_, end_ - begin_);
    end_ -= begin_;
    begin_ = 0;
  }
  if (end_ == capacity_) {
    if (end_ > kMaxLineLength) {
      eof_ = failed_ = too_long_ = true;
      return false;
    }
    auto larger = std::make_unique_for_overwrite<char[]>(capacity_ * 2);
    std::memcpy(larger.get(), buffer_.get(), end_);
    buffer_ = std::move(larger);
    capacity_ *= 2;
  }
  const long got = ReadAt(file_, buffer_.get() + end_, capacity_ - end_, file_offset_);
  if (got <= 0) {
    eof_ = true;
    failed_ = got < 0;
    return false;
  }
  end_ += static_cast<std::size_t>(got);
  file_offset_ += static_cast<std::uint64_t>(got);
  return true;
}

bool LineReader::AtEnd() {
  if (begin_ < end_) return false;
  return !Fill();
}

bool LineReader::Next(std::string_view& line) {
  std::size_t scanned = begin_;
  for (;;) {
    // Nothing to scan before the first read (and no buffer at all before the first Open).
    const void* found =
        scanned < end_ ? std::memchr(buffer_.get() + scanned, '\n', end_ - scanned) : nullptr;
    if (found != nullptr) {
      const auto newline =
          static_cast<std::size_t>(static_cast<const char*>(found) - buffer_.get());
      std::size_t stop = newline;
      if (stop > begin_ && buffer_[stop - 1] == '\r') --stop;
      line = std::string_view(buffer_.get() + begin_, stop - begin_);
      begin_ = newline + 1;
      return true;
    }
    const std::size_t consumed = begin_;
    scanned = end_;
    if (!Fill()) {
      if (begin_ == end_ || too_long_) return false;
      // Last line without an ending.
      std::size_t stop = end_;
      if (stop > begin_ && buffer_[stop - 1] == '\r') --stop;
      line = std::string_view(buffer_.get() + begin_, stop - begin_);
      begin_ = end_;
      return true;
    }
    scanned -= consumed;  // Fill moved the unread data to the front.
  }
}

}  // namespace corvanet
