#include "pxfiles/line_source.h"

#include <cerrno>
#include <cstring>

#include "pxfiles/file_io.h"
#include "pxfiles/system_io.h"

namespace corvanet::pxfiles {

namespace {
// Room for a longest line with its ending and more, so a price file takes few reads; below the
// size from which malloc maps memory of its own, which would cost a map and unmap per call.
constexpr std::size_t kBufferSize = LineSource::kMaxLine + 48 * 1024;
}  // namespace

LineSource::~LineSource() {
  if (fd_ >= 0) system::Close(fd_);
}

bool LineSource::Open(const std::string& path, std::string& error) {
  fd_ = system::OpenForReading(path);
  if (fd_ < 0) {
    error = "cannot open it: " + SystemError();
    return false;
  }
  // Not zeroed: read() fills what is used, and zeroing would touch every page of it first.
  buffer_ = std::make_unique_for_overwrite<char[]>(kBufferSize);
  return true;
}

bool LineSource::Fill(std::string& error) {
  if (begin_ > 0) {
    std::memmove(buffer_.get(), buffer_.get() + begin_, end_ - begin_);
    end_ -= begin_;
    begin_ = 0;
  }
  for (;;) {
    const long got = system::Read(fd_, buffer_.get() + end_, kBufferSize - end_);
    if (got < 0) {
      error = "cannot read it: " + SystemError();
      return false;
    }
    if (got == 0) at_eof_ = true;
    end_ += static_cast<std::size_t>(got);
    return true;
  }
}

LineSource::Result LineSource::Next(std::string_view& line, std::string& error) {
  std::size_t searched = begin_;
  for (;;) {
    const char* data = buffer_.get();
    const void* found = std::memchr(data + searched, '\n', end_ - searched);
    std::size_t stop = end_;
    if (found != nullptr) {
      stop = static_cast<std::size_t>(static_cast<const char*>(found) - data);
    } else if (!at_eof_ && end_ - begin_ <= kMaxLine + 1) {
      searched = end_ - begin_;  // where the unsearched data will start after Fill moves it
      if (!Fill(error)) return Result::kError;
      continue;
    } else if (at_eof_ && begin_ == end_) {
      return Result::kEnd;
    }
    line = std::string_view(data + begin_, stop - begin_);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    if (line.size() > kMaxLine) {
      error = "a line is longer than " + std::to_string(kMaxLine) + " bytes";
      return Result::kError;
    }
    begin_ = found != nullptr ? stop + 1 : end_;
    return Result::kLine;
  }
}

}  // namespace corvanet::pxfiles
