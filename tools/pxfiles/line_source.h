#pragma once
// The lines of a text file, read in large blocks. Lines end in CR LF or LF (the last one may have
// no ending). A line longer than kMaxLine is an error instead of a reason to grow the buffer, so
// a wrong file (a binary, one without line ends) cannot make the converter take much memory.
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace corvanet::pxfiles {

class LineSource {
 public:
  static constexpr std::size_t kMaxLine = 64 * 1024;

  LineSource() = default;
  LineSource(const LineSource&) = delete;
  LineSource& operator=(const LineSource&) = delete;
  ~LineSource();

  // False with `error` when the file cannot be opened.
  bool Open(const std::string& path, std::string& error);

  enum class Result { kLine, kEnd, kError };
  // The next line without its ending, valid until the next call; kError with `error` when the
  // line is too long or the file cannot be read.
  Result Next(std::string_view& line, std::string& error);

 private:
  bool Fill(std::string& error);

  int fd_ = -1;
  std::unique_ptr<char[]> buffer_;
  std::size_t begin_ = 0;  // unread data is [begin_, end_)
  std::size_t end_ = 0;
  bool at_eof_ = false;
};

}  // namespace corvanet::pxfiles
