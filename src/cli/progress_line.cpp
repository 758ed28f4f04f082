#include "cli/progress_line.h"

#include <cmath>
#include <cstdio>

namespace corvanet::cli {

namespace {

constexpr auto kRedrawInterval = std::chrono::milliseconds(100);
// Erases from the cursor to the end of the line.
constexpr std::string_view kEraseLine = "\x1b[K";

std::string Duration(double seconds) {
  const long whole = std::lround(seconds);
  char text[32];
  if (whole >= 3600) {
    std::snprintf(text, sizeof text, "%ld:%02ld:%02ld", whole / 3600, whole / 60 % 60, whole % 60);
  } else {
    std::snprintf(text, sizeof text, "%ld:%02ld", whole / 60, whole % 60);
  }
  return text;
}

}  // namespace

ProgressLine::ProgressLine(const Session& session, std::ostream& terminal, int width)
    : session_(session), terminal_(terminal), width_(width > 1 ? width - 1 : 1) {}

std::string ProgressLine::Compose(int in_hand, int total, const std::string& symbol,
                                  const std::string& period, double elapsed) {
  std::string text = "Datafile " + std::to_string(in_hand);
  if (total > 0) text += " of " + std::to_string(total);
  if (!symbol.empty()) text += "  " + symbol + " " + period;
  // The datafile in hand is not done yet; a rate over less than a second says nothing.
  const int done = in_hand - 1;
  if (done > 0 && elapsed >= 1.0) {
    const double rate = done / elapsed;
    char shown[32];
    std::snprintf(shown, sizeof shown, "  %.1f/s", rate);
    text += shown;
    if (total >= in_hand) text += "  " + Duration((total - done) / rate) + " left";
  }
  return text;
}

void ProgressLine::StateChanged(const WindowState& state) {
  const std::lock_guard lock(mutex_);
  const Clock::time_point now = Clock::now();
  // Counted by the datafile in hand changing, which a run and a statistics pass both show.
  std::string key = session_.run.DownloadSymbol + '\t' + session_.run.DataPeriod;
  if (key != last_key_ && !session_.run.DownloadSymbol.empty()) {
    if (in_hand_ == 0) start_ = now;
    ++in_hand_;
    last_key_ = std::move(key);
  }
  if (in_hand_ == 0 || (drawn_ && now - last_draw_ < kRedrawInterval)) return;
  last_draw_ = now;
  const double elapsed = std::chrono::duration<double>(now - start_).count();
  std::string text = Compose(in_hand_, state.ProgressBar1.maximum, session_.run.DownloadSymbol,
                             session_.run.DataPeriod, elapsed);
  // A line longer than the terminal wraps, and the carriage return would no longer reach its start.
  if (text.size() > width_) text.resize(width_);
  terminal_ << '\r' << text << kEraseLine << std::flush;
  drawn_ = true;
}

void ProgressLine::Clear() {
  const std::lock_guard lock(mutex_);
  if (!drawn_) return;
  terminal_ << '\r' << kEraseLine << std::flush;
  drawn_ = false;
}

ClearingStreamBuf::int_type ClearingStreamBuf::overflow(int_type c) {
  if (traits_type::eq_int_type(c, traits_type::eof())) return traits_type::not_eof(c);
  line_.Clear();
  return target_->sputc(traits_type::to_char_type(c));
}

std::streamsize ClearingStreamBuf::xsputn(const char* text, std::streamsize n) {
  line_.Clear();
  return target_->sputn(text, n);
}

}  // namespace corvanet::cli
