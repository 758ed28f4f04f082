#include "core/download/run_summary.h"

#include <cctype>

namespace corvanet {

std::vector<std::string> RunSummary::Lines() const {
  std::vector<std::string> lines;
  if (!started) {
    if (!busy.empty()) lines.push_back(busy);
    lines.emplace_back("Run not started.");
    return lines;
  }
  lines.push_back("Datafiles updated by merge: " + std::to_string(merged));
  lines.push_back("Datafiles fetched whole: " + std::to_string(fetched_whole));
  lines.push_back("Datafiles failed: " + std::to_string(failures.size()));
  if (not_updated > 0) lines.push_back("Datafiles not updated: " + std::to_string(not_updated));
  if (retried > 0) {
    lines.push_back("Retried after a failure that may pass: " + std::to_string(retried) +
                    " file(s), " + std::to_string(recovered) + " recovered");
  }
  for (const DatafileFailure& failure : failures) {
    lines.push_back("  " + failure.symbol + " " + failure.period + ": " + failure.reason);
  }
  if (!rejected_rows.empty()) {
    lines.push_back("Rows left out: " + std::to_string(rejected_rows.size()));
    for (const DatafileFailure& row : rejected_rows) {
      lines.push_back("  " + row.symbol + " " + row.period + ": " + row.reason);
    }
  }
  for (const std::string& note : notes) lines.push_back("Note: " + note);
  if (!statistic_failures.empty()) {
    lines.push_back("Statistic files failed: " + std::to_string(statistic_failures.size()));
    for (const DatafileFailure& failure : statistic_failures) {
      lines.push_back("  " + failure.symbol + " " + failure.period + ": " + failure.reason);
    }
  }
  if (stopped) {
    lines.push_back("Run stopped at the user's request: " + std::to_string(not_tried) +
                    " datafile(s) not tried");
  }
  if (!service_unusable.empty()) {
    std::string line =
        service_unusable + "; run stopped: " + std::to_string(not_tried) + " datafile(s) not tried";
    line[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(line[0])));
    lines.push_back(std::move(line));
  }
  if (!price_file_failures.empty()) {
    lines.push_back("Price files failed: " + std::to_string(price_file_failures.size()));
    for (const DatafileFailure& failure : price_file_failures) {
      lines.push_back("  " + failure.symbol + " " + failure.period + ": " + failure.reason);
    }
  }
  if (!converter_problem.empty()) {
    lines.push_back("MetaStock conversion not run: " + converter_problem);
  }
  for (const ConversionOutcome& batch : conversions) {
    std::string line = "MetaStock conversion " + batch.batch_file + ": " +
                       std::to_string(batch.calls - batch.failed) + " of " +
                       std::to_string(batch.calls) + " price file(s) converted";
    if (batch.no_bars > 0) line += ", " + std::to_string(batch.no_bars) + " with no bars yet";
    if (!batch.problem.empty()) line += "; " + batch.problem;
    lines.push_back(std::move(line));
    for (const std::string& call : batch.not_converted) lines.push_back("  " + call);
  }
  for (const std::string& problem : period_problems) lines.push_back("Problem: " + problem);
  for (const std::string& warning : warnings) lines.push_back("Warning: " + warning);
  if (!elapsed.empty()) lines.push_back("Elapsed time: " + elapsed);
  return lines;
}

}  // namespace corvanet
