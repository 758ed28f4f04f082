#pragma once
// What a download run did, datafile by datafile: printed by the command line, logged by the run.
#include <algorithm>
#include <string>
#include <vector>

namespace corvanet {

struct DatafileFailure {
  std::string symbol;  // as listed
  std::string period;  // "Daily" ...
  std::string reason;  // "HTTP 404 for NYSEDaily-CompositeStats.csv", ...
};

// A datafile as its list names it.
struct ListedDatafile {
  std::string name;
  std::string symbol;
  std::string period;
};

// A period whose update file could not be fetched for a reason that may pass.
struct UnfetchedUpdateFile {
  std::string period;
  int not_updated = 0;  // the period's datafiles left as they were
  std::string problem;  // its line among the period problems
  std::string cause;    // why it could not be had
};

// One converter batch run at the end of a run.
struct ConversionOutcome {
  std::string batch_file;  // "MakePxFiles.bat"
  int calls = 0;           // price files handed to the converter
  int failed = 0;          // of those, the ones not found in the converter's folder afterwards
  std::string problem;     // why the batch did not finish, or ""
  int no_bars = 0;         // price files without bars yet, not handed to the converter
  std::vector<std::string> not_converted;  // "$NYA.csv Daily: not listed in ...", the first few
};

struct RunSummary {
  bool started = false;   // false when a check before the run refused it
  std::string busy;       // why it did not start when another run holds the installation
  int merged = 0;         // datafiles brought up to date from the update file
  int fetched_whole = 0;  // datafiles written from a freshly fetched whole file
  std::vector<DatafileFailure> failures;
  // Datafiles of periods whose update file could not be had: left as they were (the cause is
  // among the period problems).
  int not_updated = 0;
  // Fetches of a whole period that failed (its update file): the period's datafiles were merged
  // from the update file of an earlier run, so they may lack the newest rows.
  std::vector<std::string> period_problems;
  // Rows of the service the merges would not take (the datafiles kept their own rows of those
  // days): symbol, period, and the file, line and why.
  std::vector<DatafileFailure> rejected_rows;
  // What a user should know of datafiles that were written all the same ("$X Daily: the update
  // file does not cover it"); no failure.
  std::vector<std::string> notes;
  // Datafiles whose single-statistic files could not be made after the periods.
  std::vector<DatafileFailure> statistic_failures;
  std::vector<ConversionOutcome> conversions;
  // Price files that could not be written (a chosen column or a value that is no price): their
  // kind and why; no converter call was made for them.
  std::vector<DatafileFailure> price_file_failures;
  // Why no conversion was run at all (the converter cannot be run), or "".
  std::string converter_problem;
  // Stopped at the user's request between datafiles; so many of the run's total were not tried.
  bool stopped = false;
  int not_tried = 0;
  // Why the run stopped for the data service's sake: it stopped answering (so many time-outs came
  // in a row) or its certificate is not trusted. Empty when it did not.
  std::string service_unusable;
  // What a user should change though nothing failed, each said once per run.
  std::vector<std::string> warnings;
  std::string elapsed;  // the elapsed-time text of the run

  // What failed for a reason that may pass (the network, a time-out, a cut body, 429, 5xx), to be
  // tried again after the walk; emptied by each round of retries.
  std::vector<ListedDatafile> transient_failures;
  std::vector<UnfetchedUpdateFile> transient_update_files;
  int retried = 0;    // datafiles and update files tried again
  int recovered = 0;  // of those, the ones a retry brought in

  bool has_failures() const {
    return stopped || !service_unusable.empty() || !failures.empty() || not_updated > 0 ||
           !rejected_rows.empty() || !period_problems.empty() || !statistic_failures.empty() ||
           !price_file_failures.empty() || !converter_problem.empty() ||
           std::any_of(conversions.begin(), conversions.end(), [](const ConversionOutcome& c) {
             return c.failed > 0 || !c.problem.empty();
           });
  }
  // Lines for the user: counts, then one line per failed datafile.
  std::vector<std::string> Lines() const;
};

}  // namespace corvanet
