// indicators SYMBOL: the breadth indicators of one datafile as CSV on standard output, for a
// user's own scripts. Reads only; nothing of the installation changes.
#include "cli/commands.h"
#include "core/indicators/indicator_table.h"
#include "core/indicators/symbol_datafile.h"

namespace corvanet::cli {

namespace {

constexpr std::string_view kCommand = "indicators";

// The names of --only, each checked; false with the unknown one in `problem`.
bool ParseIndicatorNames(std::string_view text, std::vector<Indicator>& indicators,
                         std::string& problem) {
  std::size_t start = 0;
  while (start <= text.size()) {
    const std::size_t comma = std::min(text.find(',', start), text.size());
    const std::string_view name = text.substr(start, comma - start);
    const IndicatorDef* def = FindIndicator(name);
    if (def == nullptr) {
      problem = "--only: no indicator is named \"" + std::string(name) + "\" (the names: ";
      for (const IndicatorDef& known : Indicators()) {
        if (known.indicator != Indicators().front().indicator) problem += ", ";
        problem += known.name;
      }
      problem += ")";
      return false;
    }
    indicators.push_back(def->indicator);
    start = comma + 1;
  }
  return true;
}

}  // namespace

int IndicatorsCommand(CommandContext& context, const CommandLine& line) {
  const IndicatorsRequest& request = line.indicators;
  IndicatorTableOptions options;
  options.last = request.last;
  // The validators let only dates through.
  if (!request.from.empty()) ParseBarDate(request.from, options.from);
  if (!request.to.empty()) ParseBarDate(request.to, options.to);
  std::string problem;
  if (!request.only.empty() && !ParseIndicatorNames(request.only, options.indicators, problem)) {
    return UsageError(context, kCommand, problem);
  }
  const std::string_view period = PeriodOfLetterOrName(request.period);
  const std::string path = FindSymbolDatafile(context.session.ui, period, request.symbol);
  if (path.empty()) {
    context.err << "corvanet-cli indicators: there is no " << period << " datafile of "
                << request.symbol << " in " << context.session.ui.PathToDataFiles << period
                << "/; a download run of a list that holds it makes one\n";
    return kExitRefused;
  }
  DatafileSeries series;
  DatafileError error;
  if (!ReadDatafileSeries(path, NumericColumns(), series, error)) {
    context.err << "corvanet-cli indicators: " << path << " cannot be read: " << error.Text()
                << '\n';
    return kExitRunFailures;
  }
  context.out << IndicatorTable(series, options) << std::flush;
  return kExitOk;
}

}  // namespace corvanet::cli
