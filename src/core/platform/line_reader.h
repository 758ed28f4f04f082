#pragma once
// Streams a text file line by line. Lines may end in CR LF or LF; the returned view holds the line
// without its ending and stays valid until the next call. Nothing is allocated per line once the
// buffer has grown to the longest line. A line longer than kMaxLineLength ends the reading as a
// read error (failed() and line_too_long()): no file the program reads has such lines, and one
// from outside must not cost unbounded memory.
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "core/platform/file_access.h"

namespace corvanet {

inline constexpr std::size_t kMaxLineLength = 1024 * 1024;

class LineReader {
 public:
  LineReader() = default;
  explicit LineReader(const std::string& path) { Open(path); }
  ~LineReader() { Close(); }
  LineReader(const LineReader&) = delete;
  LineReader& operator=(const LineReader&) = delete;

  bool Open(const std::string& path);
  bool is_open() const { return file_ >= 0; }
  // False at the end of the file (or on a read error, see failed()).
  bool Next(std::string_view& line);
  // True when no further line can be read.
  bool AtEnd();
  // Where in the file the next line starts.
  std::uint64_t offset() const { return file_offset_ - (end_ - begin_); }
  // Goes on reading from `offset`, which must be where a line starts.
  void SkipTo(std::uint64_t offset);
  // The open file's identity; nullopt when it cannot be told.
  std::optional<FileIdentity> identity() const { return IdentityOf(file_); }
  bool failed() const { return failed_; }
  bool line_too_long() const { return too_long_; }
  void Close();

 private:
  bool Fill();

  int file_ = -1;
  // Not zeroed when allocated: a reader of a small file touches only the pages its bytes fill.
  std::unique_ptr<char[]> buffer_;
  std::size_t capacity_ = 0;
  std::size_t begin_ = 0;          // start of unread data in buffer_
  std::size_t end_ = 0;            // end of valid data in buffer_
  std::uint64_t file_offset_ = 0;  // where in the file buffer_[end_] comes from
  bool eof_ = false;
  bool failed_ = false;
  bool too_long_ = false;
};

}  // namespace corvanet
