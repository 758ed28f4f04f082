#pragma once
// Ten-column price files: for the datafile just updated, one CSV per ticked kind (traditional,
// equal weight, three user-defined), each row giving ticker, name, period letter, date and six
// values. They are what the MetaStock converter reads.
#include <array>
#include <string>
#include <string_view>

#include "core/app/session.h"
#include "core/platform/files.h"

namespace corvanet {

struct PriceFileKind {
  std::string_view box;  // check box and settings key
  int WindowState::*ticked;
  std::string_view folder;  // under PathToDataFiles, and the period folders below it
  // The six value columns: fixed catalogue names, or the drop-downs the user fills.
  std::array<std::string_view, 6> columns;
  std::array<std::string WindowState::*, 6> chosen_columns;
};

inline constexpr std::string_view kPriceFileHeader =
    "<ticker>,<name>,<per>,<date>,<open>,<high>,<low>,<close>,<vol>,<o/i>";

// Traditional, equal weight, user-defined 1-3: the order files are written in.
const std::array<PriceFileKind, 5>& PriceFileKinds();

// Writes the price files of the datafile in hand (run.DownloadSymbol, run.DownloadName,
// run.DataPeriod, run.DestinationFileName) for every ticked kind, reading the datafile once. The
// download run calls it right after each datafile's update when MakeMetaStockPxFiles is ticked.
// Any failure is logged as "CreateMetaStockPxFiles Error # ..." and leaves all the old files.
void CreateMetaStockPxFiles(Session& session);

// PathToDataFiles + kind folder + period folder + the datafile's own name.
std::string PriceFilePath(const Session& session, const PriceFileKind& kind);
// Starts the file (a temporary beside it until committed) with the header line unless
// DoNotMakeMetaStockFormat is ticked. False when the kind's folder is missing.
bool CreatePriceFile(const Session& session, const std::string& path, AtomicFileWriter& file);
// Appends one line of a price file and its line end to `out`, the file's pending block. A line is
// ticker, name and period letter as they stand, then the date and the six values by the number
// rule untrimmed, so each number >= 0 follows its comma with a blank.
void WritePriceLine(std::string& out, std::string_view text);

}  // namespace corvanet
