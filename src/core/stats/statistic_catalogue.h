#pragma once
// The 34 breadth statistics a user can split into files of their own, each with the check box of
// the same name. Catalogue order is the order files are made in and the order "Select All" ticks.
#include <array>
#include <string_view>

#include "core/state/session.h"

namespace corvanet {

struct StatisticDef {
  std::string_view name;  // check box, settings key and folder name
  int column;             // 1-based datafile column (see composite_row.h)
  int WindowState::*box;
};

const std::array<StatisticDef, kStatisticCount>& StatisticCatalogue();
// Exact, case-sensitive; nullptr for a name that is not a statistic.
const StatisticDef* FindStatistic(std::string_view name);

// The change handler of every statistic box (UpTrends_Click ... Equal4ma_Click): ticking a box
// makes its folders, so they exist before any file of that statistic is written.
void StatisticBox_Click(Session& session, std::string_view statistic);

}  // namespace corvanet
