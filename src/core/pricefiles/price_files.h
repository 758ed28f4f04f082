#pragma once
// Ten-column price files: for the datafile just updated, one CSV per ticked kind (traditional,
// equal weight, three user-defined), each row giving ticker, name, period letter, date and six
// values. They are what the MetaStock converter reads.
#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "core/platform/files.h"
#include "core/state/session.h"
#include "core/state/writer_pool.h"
#include "core/stats/composite_row.h"

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

// What one datafile's price files need, taken from the session, so the files can be written away
// from it (on a worker thread).
struct PriceFilesJob {
  std::string datafile;       // the datafile's path
  std::string datafile_name;  // and its name and period, for the error line
  std::string period;
  std::string symbol;  // the first two fields of every line
  std::string name;
  bool header = true;
  struct Kind {
    std::size_t index = 0;  // in PriceFileKinds()
    std::string path;
    std::array<int, 6> columns{};  // 0 = no column chosen ("Select One"): the value is 0
    // Set when a chosen column can never give a price (no such statistic, a text column): the
    // kind's file is then not written.
    DatafileError problem;
    std::string batch_file;  // the converter call's batch file; empty: no call
    std::string output_folder;
  };
  std::vector<Kind> kinds;  // the ticked ones, in table order
};
PriceFilesJob PriceFilesJobOf(const Session& session);

// What became of one job's kinds: the bars each written file holds (the datafile's rows), and per
// job kind why its file was not written (no error when it was).
struct PriceFilesOutcome {
  std::size_t bars = 0;
  std::vector<DatafileError> errors;
};
// Reads the datafile once and replaces the price file of every kind it can. False (`error` says
// why, nothing replaced) when the datafile itself cannot be read; a kind whose columns or values
// give no price is left as it was and named in `outcome`, and the others are written. Touches
// nothing but the job's files.
bool WritePriceFiles(const PriceFilesJob& job, PriceFilesOutcome& outcome, DatafileError& error);

// Why a user-defined value column named `name` can never give a price ("names \"X\", which is no
// statistic"); "" for a numeric statistic and for no choice ("Select One" or empty: the value is
// 0).
std::string PriceColumnProblem(std::string_view name);

// Writes the price files of the datafile in hand (run.DownloadSymbol, run.DownloadName,
// run.DataPeriod, run.DestinationFileName) for every ticked kind, reading the datafile once, and
// then appends their converter calls. The download run hands it to its writer pool right after
// each datafile's update when MakeMetaStockPxFiles is ticked. Any failure is logged as
// "CreateMetaStockPxFiles Error # ...", leaves the old file of each kind it concerns, and is
// recorded in the session's conversion ledger with the kind and the reason.
void CreateMetaStockPxFiles(Session& session, WriterPool& writers);
// The same, written on the spot.
void CreateMetaStockPxFiles(Session& session);

// PathToDataFiles + kind folder + period folder + the datafile's own name.
std::string PriceFilePath(const Session& session, const PriceFileKind& kind);
// Appends one line of a price file and its line end to `out`, the file's pending block. A line is
// ticker, name and period letter as they stand, then the date and the six values by the number
// rule untrimmed, so each number >= 0 follows its comma with a blank.
void WritePriceLine(std::string& out, std::string_view text);

}  // namespace corvanet
