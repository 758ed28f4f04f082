#pragma once
// Where the datafile in hand comes from and goes to.
#include <string>
#include <string_view>

#include "core/state/session.h"

namespace corvanet {

inline constexpr std::string_view kPeriodNames[] = {"Daily", "Weekly", "Monthly", "Quarterly"};

// The name of period 1-4 when its box is ticked, else "".
std::string_view TickedPeriod(const WindowState& ui, int period_number);
// Sets run.DataPeriod to TickedPeriod.
void DetermineInterval(Session& session, int period_number);

// RemoteFileName, BaseFileName, DestinationFileName ... of run.WebSymbol, run.DataPeriod and
// run.DownloadSymbol (put into the vendor form on the way). False, with a log line, when a symbol
// cannot be part of a file name (a separator, "..", a control character): the datafile is skipped.
bool SetDatafileNames(Session& session);

// PathToDataFiles + period folder + DestinationFileName, or PathToDataFiles + DestinationFileName
// for vendor Other (the period is part of that name).
std::string DestinationPath(const Session& session);
// Where the datafile in hand is kept when a shorter whole file of the service replaces it (one
// generation): PathToDataFiles + "Base/Replaced/" + period + "/" + DestinationFileName.
std::string ReplacedDatafilePath(const Session& session);
// The same for the datafile of `listed_symbol` in `period`, as SetDatafileNames will name it,
// worked out without the run state or log lines, for the look ahead of the walk.
std::string DestinationPathAhead(const Session& session, std::string_view period,
                                 std::string_view listed_symbol);
// The same from the window's state alone, for a front end that holds a copy of it.
std::string DestinationPathAhead(const WindowState& ui, std::string_view period,
                                 std::string_view listed_symbol);

}  // namespace corvanet
