#pragma once
// Fault injection for trying a client's failure handling. A rule is one line:
//
//     PATTERN ACTION [VALUE] [times N]
//
// PATTERN is a glob over the request path ('*' any run of characters, '/' included; '?' one
// character). ACTION is `status CODE` (answer CODE, 400-599, with an HTML page), `delay MS`
// (wait before answering), `truncate` (announce the whole length, send half, close), `stall`
// (announce the whole length, send half, then send nothing more while keeping the connection
// open), `drop` (close the connection without an answer) or `redirect URL` (answer 302 with the
// URL as its Location). `times N` limits the rule to the first N matching requests. In a rules
// file, blank lines and lines starting with '#' are skipped.
//
// Every matching delay applies; the first matching status, truncate or drop rule decides the
// answer. Rules from the command line come before the rules file's.
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvanet::demo {

enum class FaultAction { kStatus, kDelay, kTruncate, kStall, kDrop, kRedirect };

struct FaultRule {
  std::string pattern;
  FaultAction action = FaultAction::kStatus;
  int value = 0;         // the status code, or the delay in milliseconds
  std::string location;  // where a redirect points
  int times = 0;         // 0: every matching request
  std::string text;      // the rule as written, for log lines
};

bool GlobMatch(std::string_view pattern, std::string_view text);
bool ParseFaultRule(std::string_view text, FaultRule& rule, std::string& error);
// A whole rules file; `error` names the line of the first bad rule.
bool ParseFaultRules(std::string_view content, std::vector<FaultRule>& rules, std::string& error);

// What to do with one request.
struct FaultPlan {
  int delay_ms = 0;
  std::optional<FaultRule> answer;  // any action but delay; none: answer normally
  std::string note;                 // set when a changed rules file could not be read; for the log
};

// The rules in force. The rules file is read again whenever it changes, so a running server's
// faults can be switched without a restart; a file that fails to parse leaves the old rules.
class FaultBook {
 public:
  FaultBook(std::vector<FaultRule> fixed_rules, std::string rules_file);
  // First read of the rules file (if any); false with `error` when it is missing or malformed.
  bool Load(std::string& error);
  FaultPlan Plan(std::string_view path);

 private:
  struct FileStamp {
    std::int64_t modified = -1;
    std::uint64_t size = 0;
    std::uint64_t inode = 0;
    bool operator==(const FileStamp&) const = default;
  };
  std::optional<FileStamp> Stamp() const;
  bool Reload(std::string& error);  // needs mutex_

  std::mutex mutex_;
  std::vector<FaultRule> fixed_;
  std::string file_;
  std::vector<FaultRule> rules_;  // fixed_ then the file's
  std::vector<int> used_;         // matching requests each rule has served, for `times`
  std::optional<FileStamp> stamp_;
};

}  // namespace corvanet::demo
