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
void RunPeriod(Session& session, int run_total, RunSummary& summary, UpdateFileIndex& update_rows);

// Loads the period's update file from the Base folder, where its fetch left it; false (with
// `cause`) when it holds no update rows. Garbled lines are logged and left out.
bool LoadUpdateFile(Session& session, UpdateFileIndex& update_rows, std::string& cause);

}  // namespace corvanet
