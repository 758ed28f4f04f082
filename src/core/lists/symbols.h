#pragma once
// Symbol forms: the service's name for a listed symbol, and the Reuters and Yahoo forms of index
// symbols (those beginning with "$"). Comparisons are exact and case-sensitive.
#include <string>
#include <string_view>

#include "core/state/session.h"

namespace corvanet {

// "$NYA" -> "NYSE", "$SOX" -> "SOX", "ABC" -> "ABC".
std::string ServiceForm(std::string_view symbol);
// "$INDU" -> "_DJI", "$NYA" -> "_NYA"; a symbol without "$" is returned unchanged.
std::string ReutersForm(std::string_view symbol);
// "$INDU" -> "^DJI", "$SOX" -> "^SOX"; a symbol without "$" is returned unchanged.
std::string YahooForm(std::string_view symbol);

// Sets run.WebSymbol to the service form of `symbol`.
void WebSymbolCorrection(Session& session, std::string_view symbol);
// Rewrite run.DownloadSymbol into the vendor form when that vendor option is chosen.
void ReutersSymbolCorrection(Session& session);
void YahooSymbolCorrection(Session& session);

// Quarterly runs skip these listed symbols: the service keeps no quarterly files for them.
bool IsSkippedInQuarterly(std::string_view listed_symbol);

}  // namespace corvanet
