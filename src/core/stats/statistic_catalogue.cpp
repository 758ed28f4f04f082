#include "core/stats/statistic_catalogue.h"

#include <string>

#include "core/state/log.h"
#include "core/stats/single_stat_files.h"

namespace corvanet {

namespace {

using W = WindowState;

constexpr std::array<StatisticDef, kStatisticCount> kCatalogue = {{
    {"UpTrends", 11, &W::UpTrends},
    {"NewUpTrends", 12, &W::NewUpTrends},
    {"DownTrends", 13, &W::DownTrends},
    {"NewDownTrends", 14, &W::NewDownTrends},
    {"Advances", 16, &W::Advances},
    {"Declines", 17, &W::Declines},
    {"Unchanged", 23, &W::Unchanged},
    {"Traded", 22, &W::Traded},
    {"UpVolume", 18, &W::UpVolume},
    {"DownVolume", 19, &W::DownVolume},
    {"TotalVolume", 15, &W::TotalVolume},
    {"NewHighs", 20, &W::NewHighs},
    {"NewHighs1stDay", 46, &W::NewHighs1stDay},
    {"NewLows", 21, &W::NewLows},
    {"NewLows1stDay", 47, &W::NewLows1stDay},
    {"QNewHighs", 44, &W::QNewHighs},
    {"QNewHighs1stDay", 48, &W::QNewHighs1stDay},
    {"QNewLows", 45, &W::QNewLows},
    {"QNewLows1stDay", 49, &W::QNewLows1stDay},
    {"Above200ma", 29, &W::Above200ma},
    {"Below200ma", 30, &W::Below200ma},
    {"Equal200ma", 31, &W::Equal200ma},
    {"Above30ma", 32, &W::Above30ma},
    {"Below30ma", 33, &W::Below30ma},
    {"Equal30ma", 34, &W::Equal30ma},
    {"Above18ma", 35, &W::Above18ma},
    {"Below18ma", 36, &W::Below18ma},
    {"Equal18ma", 37, &W::Equal18ma},
    {"Above9ma", 38, &W::Above9ma},
    {"Below9ma", 39, &W::Below9ma},
    {"Equal9ma", 40, &W::Equal9ma},
    {"Above4ma", 41, &W::Above4ma},
    {"Below4ma", 42, &W::Below4ma},
    {"Equal4ma", 43, &W::Equal4ma},
}};

}  // namespace

const std::array<StatisticDef, kStatisticCount>& StatisticCatalogue() {
  return kCatalogue;
}

const StatisticDef* FindStatistic(std::string_view name) {
  for (const StatisticDef& statistic : kCatalogue) {
    if (statistic.name == name) return &statistic;
  }
  return nullptr;
}

void StatisticBox_Click(Session& session, std::string_view statistic) {
  LogEntry(session, std::string(statistic) + "_Click");
  const StatisticDef* def = FindStatistic(statistic);
  // Folders are made for what is switched on; unticking leaves them (and their files) alone.
  if (def != nullptr && session.ui.*def->box != 0) MakeStatDirectories(session, statistic);
}

}  // namespace corvanet
