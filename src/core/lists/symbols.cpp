#include "core/lists/symbols.h"

#include <utility>

#include "core/state/log.h"

namespace corvanet {

namespace {

using Correction = std::pair<std::string_view, std::string_view>;

constexpr Correction kServiceForms[] = {
    {"NYA", "NYSE"},   {"XAX", "AMEX"},  {"COMPQ", "NASDAQ"}, {"SPX", "SP500"},
    {"NDX", "NAS100"}, {"INDU", "DJ30"}, {"TYX", "Rates"},
};
constexpr Correction kReutersForms[] = {
    {"COMPQ", "IXIC"}, {"DUX", "DJU"}, {"INDU", "DJI"}, {"SOX", "SOXX"}, {"TRAN", "DJT"},
};
// No "SOX" row, unlike the Reuters table.
constexpr Correction kYahooForms[] = {
    {"COMPQ", "IXIC"},
    {"DUX", "DJU"},
    {"INDU", "DJI"},
    {"TRAN", "DJT"},
};

template <std::size_t N>
std::string_view Corrected(std::string_view symbol, const Correction (&table)[N]) {
  for (const auto& [listed, corrected] : table) {
    if (symbol == listed) return corrected;
  }
  return symbol;
}

template <std::size_t N>
std::string VendorForm(std::string_view symbol, const Correction (&table)[N], char prefix) {
  if (symbol.empty() || symbol.front() != '$') return std::string(symbol);
  std::string form(1, prefix);
  form += Corrected(symbol.substr(1), table);
  return form;
}

}  // namespace

std::string ServiceForm(std::string_view symbol) {
  if (!symbol.empty() && symbol.front() == '$') symbol.remove_prefix(1);
  return std::string(Corrected(symbol, kServiceForms));
}

std::string ReutersForm(std::string_view symbol) {
  return VendorForm(symbol, kReutersForms, '_');
}
std::string YahooForm(std::string_view symbol) {
  return VendorForm(symbol, kYahooForms, '^');
}

void WebSymbolCorrection(Session& session, std::string_view symbol) {
  LogEntry(session, "WebSymbolCorrection");
  session.run.WebSymbol = ServiceForm(symbol);
}

void ReutersSymbolCorrection(Session& session) {
  LogEntry(session, "ReutersSymbolCorrection");
  if (session.ui.VendorReuters)
    session.run.DownloadSymbol = ReutersForm(session.run.DownloadSymbol);
}

void YahooSymbolCorrection(Session& session) {
  // Logs the Reuters procedure's name: support scripts look for that text.
  LogEntry(session, "ReutersSymbolCorrection");
  if (session.ui.VendorYahoo) session.run.DownloadSymbol = YahooForm(session.run.DownloadSymbol);
}

bool IsSkippedInQuarterly(std::string_view listed_symbol) {
  return listed_symbol == "$XAX" || listed_symbol == "$NYA" || listed_symbol == "$COMPQ";
}

}  // namespace corvanet
