#pragma once
// Single-statistic files: for every composite of a download list and every period of the run, one
// CSV per selected statistic with a date and the statistic's value on each line.
#include <string>
#include <string_view>
#include <vector>

#include "core/app/session.h"
#include "core/download/run_summary.h"
#include "core/platform/files.h"

namespace corvanet {

// What one pass did, for the command line and the run's summary.
struct StatFilesSummary {
  int datafiles = 0;  // datafiles whose statistic files were all written
  std::vector<DatafileFailure> failures;
};

// The pass over the current download list for each period of the run: only when the list's RunWith
// box is ticked; the completion captions are shown either way. The download run calls it after its
// periods when AutoCreateOneStatFiles is ticked.
void MakeSingleStatFiles(Session& session, StatFilesSummary* summary = nullptr);

// The list buttons of the page (MakeList1StatFiles_Click ... MakeList5StatFiles_Click for 1-5,
// MakeAllDailyStatFiles_Click for 6, MakeAllPeriodsStatFiles_Click for 7): select the list, tick
// its RunWith box and make the files now.
void MakeListStatFiles_Click(Session& session, int list, StatFilesSummary* summary = nullptr);
// Shows the download page, starts the clock, restores the current list and makes the files.
void RunSingleStatFilesNow(Session& session, StatFilesSummary* summary = nullptr);

// All selected statistic files of the datafile in hand (run.DataPeriod, run.DestinationFileName),
// named after `listed_symbol` (the symbol as the list holds it, before any vendor correction). The
// datafile is read once. Either every file is replaced or, on any failure (missing datafile or
// folder, malformed row), none is and `problem` names the failure; see the .cpp for why.
bool MakeIndividualStatFile(Session& session, std::string_view listed_symbol,
                            std::string* problem = nullptr);

// PathToDataFiles + the two folders of the chosen structure + the name rule + ".csv".
std::string StatisticFilePath(const Session& session, std::string_view listed_symbol,
                              std::string_view statistic);
// Starts the statistic's file (a temporary beside it until committed). False when its folder is
// missing: folders are made by the statistic boxes, never here.
bool OpenStatisticFile(const Session& session, std::string_view listed_symbol,
                       std::string_view statistic, AtomicFileWriter& file);

// The ReplaceZeroValues rule, taken once per pass: replace only when the text begins with a
// non-zero number ("0" and a blank box never replace), and write the text as typed.
struct ZeroReplacement {
  bool active = false;
  std::string text;
};
ZeroReplacement ZeroReplacementOf(std::string_view replace_zero_values);
// Appends "date,value" and the line end to `out`, the value replaced when it reads as zero.
void WriteStatisticRow(std::string& out, std::string_view date_text, std::string_view value_text,
                       const ZeroReplacement& zero);

// Makes the statistic's folders in the chosen structure; existing ones are fine.
void MakeStatDirectories(Session& session, std::string_view statistic);

}  // namespace corvanet
