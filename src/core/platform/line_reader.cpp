#include "core/platform/line_reader.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#ifndef _WIN32
#include <fcntl.h>
#include <unistd.h>
#else
#include <fcntl.h>
#include <io.h>
#endif

namespace corvanet {

namespace {

constexpr std::size_t kChunk = 64 * 1024;

// Reads at an offset of the reader's own keeping, so positioning costs no system call.
long ReadAt(int file, char* into, std::size_t size, std::uint64_t offset) {
#ifndef _WIN32
  for (;;) {
    const ssize_t got = ::pread(file, into, size, static_cast<off_t>(offset));
    if (got >= 0 || errno != EINTR) return static_cast<long>(got);
  }
#else
  if (::_lseeki64(file, static_cast<long long>(offset), SEEK_SET) < 0) return -1;
  return ::_read(file, into, static_cast<unsigned>(std::min<std::size_t>(size, 1u << 30)));
#endif
}

}  // namespace

bool LineReader::Open(const std::string& path) {
  Close();
#ifndef _WIN32
  file_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
#else
  file_ = ::_open(path.c_str(), _O_RDONLY | _O_BINARY);
#endif
  if (file_ < 0) return false;
  buffer_.resize(kChunk);
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

std::optional<FileIdentity> LineReader::identity() const {
  return IdentityOf(file_);
}

void LineReader::Close() {
  if (file_ >= 0) {
#ifndef _WIN32
    ::close(file_);
#else
    ::_close(file_);
#endif
  }
  file_ = -1;
  begin_ = end_ = 0;
  eof_ = true;
}

bool LineReader::Fill() {
  if (eof_ || file_ < 0) return false;
  // Keep the unread tail, then read behind it; grow when one line fills the whole buffer.
  if (begin_ > 0) {
    std::memmove(buffer_.data(), buffer_.data() + begin_, end_ - begin_);
    end_ -= begin_;
    begin_ = 0;
  }
  if (end_ == buffer_.size()) {
    if (end_ > kMaxLineLength) {
      eof_ = failed_ = too_long_ = true;
      return false;
    }
    buffer_.resize(buffer_.size() * 2);
  }
  const long got = ReadAt(file_, buffer_.data() + end_, buffer_.size() - end_, file_offset_);
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
    const void* found = std::memchr(buffer_.data() + scanned, '\n', end_ - scanned);
    if (found != nullptr) {
      const auto newline =
          static_cast<std::size_t>(static_cast<const char*>(found) - buffer_.data());
      std::size_t stop = newline;
      if (stop > begin_ && buffer_[stop - 1] == '\r') --stop;
      line = std::string_view(buffer_.data() + begin_, stop - begin_);
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
      line = std::string_view(buffer_.data() + begin_, stop - begin_);
      begin_ = end_;
      return true;
    }
    scanned -= consumed;  // Fill moved the unread data to the front.
  }
}

}  // namespace corvanet
