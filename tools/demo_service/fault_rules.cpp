#include "demo_service/fault_rules.h"

#include <charconv>

#include "core/platform/file_access.h"
#include "core/platform/files.h"
#include "core/platform/text.h"

namespace corvanet::demo {

namespace {

std::vector<std::string_view> Words(std::string_view text) {
  std::vector<std::string_view> words;
  std::size_t i = 0;
  while (i < text.size()) {
    while (i < text.size() && (text[i] == ' ' || text[i] == '\t')) ++i;
    const std::size_t start = i;
    while (i < text.size() && text[i] != ' ' && text[i] != '\t') ++i;
    if (i > start) words.push_back(text.substr(start, i - start));
  }
  return words;
}

bool ParseCount(std::string_view text, int low, int high, int& value) {
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  return result.ec == std::errc() && result.ptr == text.data() + text.size() && value >= low &&
         value <= high;
}

}  // namespace

bool GlobMatch(std::string_view pattern, std::string_view text) {
  std::size_t p = 0, t = 0;
  std::size_t star = std::string_view::npos, resume = 0;
  while (t < text.size()) {
    if (p < pattern.size() && (pattern[p] == '?' || pattern[p] == text[t])) {
      ++p;
      ++t;
    } else if (p < pattern.size() && pattern[p] == '*') {
      star = p++;
      resume = t;
    } else if (star != std::string_view::npos) {
      // Let the last '*' take one more character and try again from there.
      p = star + 1;
      t = ++resume;
    } else {
      return false;
    }
  }
  while (p < pattern.size() && pattern[p] == '*') ++p;
  return p == pattern.size();
}

bool ParseFaultRule(std::string_view text, FaultRule& rule, std::string& error) {
  const std::vector<std::string_view> words = Words(text);
  rule = FaultRule{};
  rule.text = std::string(Trim(text));
  if (words.size() < 2) {
    error = "a fault rule is PATTERN ACTION [VALUE] [times N]: '" + rule.text + "'";
    return false;
  }
  rule.pattern = std::string(words[0]);
  const std::string_view action = words[1];
  std::size_t next = 2;
  if (action == "status" || action == "delay") {
    const bool status = action == "status";
    rule.action = status ? FaultAction::kStatus : FaultAction::kDelay;
    if (next >= words.size() ||
        !ParseCount(words[next], status ? 400 : 0, status ? 599 : 600000, rule.value)) {
      error = status ? "status wants a code from 400 to 599: '" + rule.text + "'"
                     : "delay wants milliseconds from 0 to 600000: '" + rule.text + "'";
      return false;
    }
    ++next;
  } else if (action == "truncate") {
    rule.action = FaultAction::kTruncate;
  } else if (action == "stall") {
    rule.action = FaultAction::kStall;
  } else if (action == "drop") {
    rule.action = FaultAction::kDrop;
  } else if (action == "redirect") {
    rule.action = FaultAction::kRedirect;
    if (next >= words.size()) {
      error = "redirect wants the URL to point to: '" + rule.text + "'";
      return false;
    }
    rule.location = std::string(words[next++]);
  } else {
    error = "unknown fault action '" + std::string(action) +
            "' (status, delay, truncate, stall, drop or redirect): '" + rule.text + "'";
    return false;
  }
  if (next < words.size() && words[next] == "times") {
    if (next + 1 >= words.size() || !ParseCount(words[next + 1], 1, 1000000, rule.times)) {
      error = "times wants a count of 1 or more: '" + rule.text + "'";
      return false;
    }
    next += 2;
  }
  if (next != words.size()) {
    error = "unexpected '" + std::string(words[next]) + "' in fault rule '" + rule.text + "'";
    return false;
  }
  return true;
}

bool ParseFaultRules(std::string_view content, std::vector<FaultRule>& rules, std::string& error) {
  int line_number = 0;
  while (!content.empty()) {
    const std::size_t end = content.find('\n');
    std::string_view line = content.substr(0, end);
    content = end == std::string_view::npos ? std::string_view() : content.substr(end + 1);
    ++line_number;
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    line = Trim(line);
    if (line.empty() || line.front() == '#') continue;
    FaultRule rule;
    if (!ParseFaultRule(line, rule, error)) {
      error = "line " + std::to_string(line_number) + ": " + error;
      return false;
    }
    rules.push_back(std::move(rule));
  }
  return true;
}

FaultBook::FaultBook(std::vector<FaultRule> fixed_rules, std::string rules_file)
    : fixed_(std::move(fixed_rules)), file_(std::move(rules_file)) {
  rules_ = fixed_;
  used_.assign(rules_.size(), 0);
}

bool FaultBook::Load(std::string& error) {
  const std::lock_guard<std::mutex> lock(mutex_);
  if (file_.empty()) return true;
  if (!Reload(error)) {
    error = "fault rules file " + file_ + ": " + error;
    return false;
  }
  return true;
}

std::optional<FaultBook::FileStamp> FaultBook::Stamp() const {
  const std::optional<FileIdentity> identity = IdentityOf(file_);
  if (!identity) return std::nullopt;
  FileStamp stamp;
  stamp.modified = identity->modified_ns;
  stamp.size = identity->size;
  stamp.inode = identity->inode;
  return stamp;
}

bool FaultBook::Reload(std::string& error) {
  stamp_ = Stamp();
  const std::optional<std::string> content = ReadWholeFile(file_);
  if (!stamp_ || !content) {
    error = "cannot read it";
    return false;
  }
  std::vector<FaultRule> rules = fixed_;
  if (!ParseFaultRules(*content, rules, error)) return false;
  rules_ = std::move(rules);
  used_.assign(rules_.size(), 0);
  return true;
}

FaultPlan FaultBook::Plan(std::string_view path) {
  const std::lock_guard<std::mutex> lock(mutex_);
  FaultPlan plan;
  if (!file_.empty() && Stamp() != stamp_) {
    std::string error;
    if (!Reload(error)) plan.note = "fault rules file " + file_ + " not reloaded: " + error;
  }
  for (std::size_t i = 0; i < rules_.size(); ++i) {
    const FaultRule& rule = rules_[i];
    if (!GlobMatch(rule.pattern, path)) continue;
    if (rule.times > 0 && used_[i] >= rule.times) continue;
    if (rule.action == FaultAction::kDelay) {
      plan.delay_ms += rule.value;
    } else if (plan.answer) {
      continue;  // an earlier rule decides the answer; this one stays unused
    } else {
      plan.answer = rule;
    }
    ++used_[i];
  }
  return plan;
}

}  // namespace corvanet::demo
