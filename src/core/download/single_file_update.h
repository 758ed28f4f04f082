#pragma once
#include "core/download/run_summary.h"
#include "core/download/update_file_index.h"
#include "core/platform/field_reader.h"
#include "core/state/session.h"

namespace corvanet {

// Every record of the open download list for the period in run.DataPeriod: name the datafile, make
// sure its base copy is there (or fetch it whole when a full download is forced), merge, and make
// its price files. Each datafile's outcome goes into `summary`; one failing datafile never stops
// the others.
void SingleFileUpdate(Session& session, FieldReader& list, int run_total, int& record_counter,
                      const UpdateFileIndex& update_rows, RunSummary& summary);

}  // namespace corvanet
