#pragma once
// The line on a terminal that shows a run or a statistics pass at work: datafiles in hand of the
// run's total, the symbol and period, the rate and the time left. Redrawn in place, at most ten
// times a second, and wiped before anything else is printed and when the work ends.
#include <chrono>
#include <mutex>
#include <ostream>
#include <streambuf>
#include <string>

#include "core/state/session.h"

namespace corvanet::cli {

class ProgressLine final : public StateObserver {
 public:
  using Clock = std::chrono::steady_clock;

  // `terminal` receives the escape sequences; `width` is the terminal's, in columns.
  ProgressLine(const Session& session, std::ostream& terminal, int width);
  ~ProgressLine() override { Clear(); }

  void StateChanged(const WindowState& state) override;
  void Clear();

  // The text drawn for `done` datafiles of `total` (0 = unknown) after `elapsed` seconds.
  static std::string Compose(int in_hand, int total, const std::string& symbol,
                             const std::string& period, double elapsed);

 private:
  const Session& session_;
  std::ostream& terminal_;
  std::size_t width_;
  std::mutex mutex_;
  bool drawn_ = false;
  Clock::time_point start_{};
  Clock::time_point last_draw_{};
  std::string last_key_;
  int in_hand_ = 0;
};

// A stream buffer that wipes the progress line before the text it passes on, so message boxes and
// summaries printed during the work never share the line.
class ClearingStreamBuf final : public std::streambuf {
 public:
  ClearingStreamBuf(std::streambuf* target, ProgressLine& line) : target_(target), line_(line) {}

 protected:
  int_type overflow(int_type c) override;
  std::streamsize xsputn(const char* text, std::streamsize n) override;
  int sync() override { return target_->pubsync(); }

 private:
  std::streambuf* target_;
  ProgressLine& line_;
};

}  // namespace corvanet::cli
