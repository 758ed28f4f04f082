#include "core/stats/statistic_choices.h"

#include "core/app/log.h"

namespace corvanet {

void LoadStatisticChoices(Session& session) { LogEntry(session, "LoadStatisticChoices"); }

}  // namespace corvanet
