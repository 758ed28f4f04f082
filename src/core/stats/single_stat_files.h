#pragma once
// Single-statistic files: for every composite of a download list and every period of the run, one
// CSV per selected statistic with a date and the statistic's value on each line.
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "core/download/run_summary.h"
#include "core/platform/files.h"
#include "core/state/session.h"
#include "core/stats/composite_row.h"
#include "core/stats/statistic_catalogue.h"

namespace corvanet {

// What one pass did, for the command line and the run's summary.
struct StatFilesSummary {
  int datafiles = 0;  // datafiles whose statistic files were all written
  std::vector<DatafileFailure> failures;
  std::string busy;  // why nothing was made when another run holds the installation
};

// The pass over the current download list for each period of the run: only when the list's RunWith
// box is ticked; the completion captions are shown either way. The download run calls it after its
// periods when AutoCreateOneStatFiles is ticked.
void MakeSingleStatFiles(Session& session, StatFilesSummary* summary = nullptr);

// Shows the download page, starts the clock, restores the current list and makes the files.
void RunSingleStatFilesNow(Session& session, StatFilesSummary* summary = nullptr);

// The ReplaceZeroValues rule, taken once per pass: replace only when the text begins with a
// non-zero number ("0" and a blank box never replace), and write the text as typed.
struct ZeroReplacement {
  bool active = false;
  std::string text;
};

// What one datafile's statistic files need, taken from the session, so the files can be written
// away from it (on a worker thread).
struct StatFilesJob {
  std::string datafile;       // the datafile's path
  std::string datafile_name;  // and its name and period, for the error line
  std::string period;
  std::vector<const StatisticDef*> statistics;  // the selected ones, in catalogue order
  std::vector<std::string> files;               // the file of each
  ZeroReplacement zero;
  bool month_first = false;
};
StatFilesJob StatFilesJobOf(const Session& session, std::string_view listed_symbol);
// Reads the datafile once and replaces every file of the job, or none (`error` says why).
// Touches nothing but the job's files.
bool WriteStatFiles(const StatFilesJob& job, DatafileError& error);

// All selected statistic files of the datafile in hand (run.DataPeriod, run.DestinationFileName),
// named after `listed_symbol` (the symbol as the list holds it, before any vendor correction). The
// datafile is read once. Either every file is replaced or, on any failure (missing datafile or
// folder, malformed row), none is and `problem` names the failure; see the .cpp for why.
bool MakeIndividualStatFile(Session& session, std::string_view listed_symbol,
                            std::string* problem = nullptr);

// The folder of one statistic's files of one period, in the folder structure the user chose.
std::string StatisticFolder(const WindowState& ui, std::string_view period,
                            std::string_view statistic);
// PathToDataFiles + the two folders of the chosen structure + the name rule + ".csv".
std::string StatisticFilePath(const Session& session, std::string_view listed_symbol,
                              std::string_view statistic);

// A statistic file being written: its writer (a temporary beside the file until committed) and
// the lines not yet handed to it, gathered in one block so a file takes a write call per 64 KiB
// rather than per line.
class StatisticFile {
 public:
  static constexpr std::size_t kBlockSize = 64 * 1024;

  StatisticFile();
  bool Open(const std::string& path);
  // Appends head + tail + CR LF.
  void WriteLine(std::string_view head, std::string_view tail);
  // The same for a head of at most 16 characters in a buffer of 16: copied whole, without a call.
  void WriteLine(const char (&head)[16], std::size_t head_size, std::string_view tail);
  // Hands over what is left and replaces the file; false (old file kept) on any failure.
  bool Commit();
  // Drops everything written; the old file stays.
  void Discard();
  const AtomicFileWriter& writer() const { return writer_; }

 private:
  void Flush();

  AtomicFileWriter writer_;
  std::unique_ptr<char[]> block_;
  std::size_t used_ = 0;
};

// Starts the statistic's file. False when its folder is missing: folders are made by the
// statistic boxes, never here.
bool OpenStatisticFile(const Session& session, std::string_view listed_symbol,
                       std::string_view statistic, StatisticFile& file);

ZeroReplacement ZeroReplacementOf(std::string_view replace_zero_values);
// Writes "date,value" and the line end, the value replaced when it reads as zero.
void WriteStatisticRow(StatisticFile& file, std::string_view date_text, std::string_view value_text,
                       const ZeroReplacement& zero);

// Makes the statistic's folders in the chosen structure; existing ones are fine.
void MakeStatDirectories(Session& session, std::string_view statistic);

}  // namespace corvanet
