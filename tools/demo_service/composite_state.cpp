#include "demo_service/composite_state.h"

#include <charconv>
#include <string>

#include "core/platform/files.h"
#include "core/platform/line_reader.h"

namespace corvanet::demo {

namespace {

constexpr std::string_view kMagic = "corvanet-demo-state 1";

void AppendValue(std::string& out, double value) {
  char buffer[32];
  // The shortest text that reads back as the same double.
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
  out += ' ';
  out.append(buffer, result.ptr);
}

void AppendValue(std::string& out, int value) {
  AppendValue(out, static_cast<double>(value));
}

// Reads blank-separated numbers from one line.
class Numbers {
 public:
  explicit Numbers(std::string_view text) : text_(text) {}
  bool Read(double& value) {
    while (!text_.empty() && text_.front() == ' ') text_.remove_prefix(1);
    const auto result = std::from_chars(text_.data(), text_.data() + text_.size(), value);
    if (result.ec != std::errc() || text_.empty()) return false;
    text_.remove_prefix(static_cast<std::size_t>(result.ptr - text_.data()));
    return true;
  }
  bool Read(int& value) {
    double number = 0;
    if (!Read(number)) return false;
    value = static_cast<int>(number);
    return true;
  }
  template <typename... T>
  bool ReadAll(T&... values) {
    return (Read(values) && ...);
  }

 private:
  std::string_view text_;
};

std::string LevelLine(int index, const LevelState& level) {
  std::string line = "level";
  AppendValue(line, index);
  for (const double v : {static_cast<double>(level.count), static_cast<double>(level.next),
                         level.range, level.up_share, level.mood, level.ad_line, level.fast_average,
                         level.slow_average, level.summation, level.high_low_line}) {
    AppendValue(line, v);
  }
  for (const double sum : level.sums) AppendValue(line, sum);
  // The ring fills from slot 0, so its first `count` slots are all that is in use.
  for (int i = 0; i < level.count; ++i)
    AppendValue(line, level.closes[static_cast<std::size_t>(i)]);
  return line;
}

bool ReadLevel(Numbers& numbers, LevelState& level) {
  if (!numbers.ReadAll(level.count, level.next, level.range, level.up_share, level.mood,
                       level.ad_line, level.fast_average, level.slow_average, level.summation,
                       level.high_low_line) ||
      !numbers.ReadAll(level.sums[0], level.sums[1], level.sums[2], level.sums[3], level.sums[4])) {
    return false;
  }
  if (level.count < 0 || level.count > LevelState::kWindow || level.next < 0 ||
      level.next >= LevelState::kWindow) {
    return false;
  }
  for (int i = 0; i < level.count; ++i) {
    if (!numbers.Read(level.closes[static_cast<std::size_t>(i)])) return false;
  }
  return true;
}

std::string BuilderLine(int index, const PeriodBuilder& b) {
  std::string line = "builder";
  AppendValue(line, index);
  for (const double v : {static_cast<double>(b.bars), b.start_close, b.start_eq_close, b.open,
                         b.high, b.low, b.eq_open, b.eq_high, b.eq_low, b.total_volume, b.up_volume,
                         b.down_volume, b.trade_volume}) {
    AppendValue(line, v);
  }
  return line;
}

bool ReadBuilder(Numbers& numbers, PeriodBuilder& b) {
  return numbers.ReadAll(b.bars, b.start_close, b.start_eq_close, b.open, b.high, b.low, b.eq_open,
                         b.eq_high, b.eq_low, b.total_volume, b.up_volume, b.down_volume,
                         b.trade_volume);
}

bool TakeWord(std::string_view& line, std::string_view word) {
  if (line.substr(0, word.size()) != word) return false;
  line.remove_prefix(word.size());
  return line.empty() || line.front() == ' ';
}

}  // namespace

void RowTail::Push(std::string_view row) {
  rows_[static_cast<std::size_t>(next_)].assign(row);
  next_ = (next_ + 1) % kUpdateRows;
  if (count_ < kUpdateRows) ++count_;
}

const std::string& RowTail::at(int i) const {
  const int oldest = count_ < kUpdateRows ? 0 : next_;
  return rows_[static_cast<std::size_t>((oldest + i) % kUpdateRows)];
}

std::string StateFolder(const std::string& root) {
  return root + ".demo-state/";
}

std::string StateFilePath(const std::string& root, std::string_view service_symbol) {
  return StateFolder(root) + std::string(service_symbol) + ".state";
}

bool SaveState(const std::string& path, const CompositeState& state, std::string& error) {
  AtomicFileWriter out(path);
  if (!out.is_open()) {
    error = "cannot write " + path + ": " + out.error();
    return false;
  }
  out.WriteLine(kMagic);
  std::string line = "price";
  AppendValue(line, state.model.last_day);
  AppendValue(line, state.model.close);
  AppendValue(line, state.model.eq_close);
  AppendValue(line, state.model.log_anchor);
  out.WriteLine(line);
  for (int i = 0; i < kPeriodCount; ++i) {
    out.WriteLine(LevelLine(i, state.model.levels[static_cast<std::size_t>(i)]));
  }
  for (int i = 0; i < kPeriodCount - 1; ++i) {
    out.WriteLine(BuilderLine(i, state.model.builders[static_cast<std::size_t>(i)]));
  }
  for (int p = 0; p < kPeriodCount; ++p) {
    const RowTail& tail = state.tails[static_cast<std::size_t>(p)];
    for (int i = 0; i < tail.size(); ++i) {
      line = "tail ";
      line += PeriodLetter(static_cast<Period>(p));
      line += ' ';
      line += tail.at(i);
      out.WriteLine(line);
    }
  }
  if (!out.Commit()) {
    error = "cannot write " + path + ": " + out.error();
    return false;
  }
  return true;
}

bool LoadState(const std::string& path, CompositeState& state, std::string& error) {
  LineReader in(path);
  if (!in.is_open()) {
    error = "no state file " + path + " (run generate first)";
    return false;
  }
  state = CompositeState{};
  std::string_view line;
  if (!in.Next(line) || line != kMagic) {
    error = path + " is not a state file of this program";
    return false;
  }
  int line_number = 1;
  while (in.Next(line)) {
    ++line_number;
    bool ok = true;
    if (TakeWord(line, "price")) {
      Numbers numbers(line);
      ok = numbers.ReadAll(state.model.last_day, state.model.close, state.model.eq_close,
                           state.model.log_anchor);
    } else if (TakeWord(line, "level")) {
      Numbers numbers(line);
      int index = -1;
      ok = numbers.Read(index) && index >= 0 && index < kPeriodCount &&
           ReadLevel(numbers, state.model.levels[static_cast<std::size_t>(index)]);
    } else if (TakeWord(line, "builder")) {
      Numbers numbers(line);
      int index = -1;
      ok = numbers.Read(index) && index >= 0 && index < kPeriodCount - 1 &&
           ReadBuilder(numbers, state.model.builders[static_cast<std::size_t>(index)]);
    } else if (TakeWord(line, "tail") && line.size() > 3) {
      ok = false;
      for (int p = 0; p < kPeriodCount; ++p) {
        if (line[1] == PeriodLetter(static_cast<Period>(p)) && line[2] == ' ') {
          state.tails[static_cast<std::size_t>(p)].Push(line.substr(3));
          ok = true;
        }
      }
    } else {
      ok = false;
    }
    if (!ok) {
      error = path + " line " + std::to_string(line_number) + " is damaged";
      return false;
    }
  }
  return true;
}

}  // namespace corvanet::demo
