#include "demo_service/request_log.h"

namespace corvanet::demo {

namespace {

// A path is the client's text; keep control characters out of the log's lines.
void AppendPrintable(std::string& line, std::string_view text) {
  for (const char c : text) {
    const auto u = static_cast<unsigned char>(c);
    line += (u < 0x20 || u == 0x7F) ? '?' : c;
  }
}

}  // namespace

void RequestLog::Request(std::string_view method, std::string_view path, int status,
                         std::uint64_t bytes, std::string_view note) {
  std::string line;
  AppendPrintable(line, method);
  line += ' ';
  AppendPrintable(line, path);
  line += ' ';
  line += status > 0 ? std::to_string(status) : "-";
  line += ' ';
  line += std::to_string(bytes);
  if (!note.empty()) {
    line += " (";
    line += note;
    line += ')';
  }
  Write(line);
}

void RequestLog::Note(std::string_view text) {
  Write(std::string(text));
}

void RequestLog::Write(const std::string& line) {
  const std::lock_guard<std::mutex> lock(mutex_);
  out_ << line << '\n';
  out_.flush();
}

}  // namespace corvanet::demo
