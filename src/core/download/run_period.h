#pragma once
// One period's part of a run: its update file fetched and indexed, then the walk of the list.
#include <string>

#include "core/download/run_summary.h"
#include "core/download/update_file_index.h"
#include "core/state/session.h"

namespace corvanet {

// "Update-" + period + ".csv", the period's update file: its remote path and its local name.
std::string UpdateFileName(std::string_view period);

// The walk of the period set by DetermineInterval over the download list, updating every datafile
// it names. What failed lands in `summary`. `update_rows` takes the period's update file; a run
// passes the same one for each period, so the memory that holds one file's rows holds the next's.
// When the update file cannot be had (or holds no rows) the period is merged with the one an
// earlier run kept, and the failure is a period problem; a failure that may pass waits for the
// retries instead (summary.transient_update_files).
void RunPeriod(Session& session, int run_total, RunSummary& summary, UpdateFileIndex& update_rows);

// The periods whose update files the retries did not bring in, merged with the kept ones.
void MergeWithKeptUpdateFiles(Session& session, int run_total, RunSummary& summary);

// Loads the period's update file from the Base folder, where its fetch left it; false (with
// `cause`) when it holds no update rows. Garbled lines are logged and left out.
bool LoadUpdateFile(Session& session, UpdateFileIndex& update_rows, std::string& cause);

}  // namespace corvanet
