#pragma once
// The served tree: <root>/ovalith/<data set>/ holds the data set's master file, one datafile per
// composite and period, the four period update files and the system message file.
#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "demo_service/calendar.h"
#include "demo_service/catalog.h"
#include "demo_service/composite_state.h"

namespace corvanet::demo {

inline constexpr std::string_view kSystemMessageFile = "Zennor_System.txt";
inline constexpr std::string_view kServedTop = "ovalith";

// How the tree was made; kept beside the state files so `advance` rebuilds the same universe.
struct TreeInfo {
  std::uint64_t seed = 1;
  int composites = 60;
};

// `root` ends with '/'.
std::string DataSetFolder(const std::string& root, int data_set);
// "NYSE" + "Daily" + "-CompositeStats.csv".
std::string DatafileName(std::string_view service_symbol, Period period);
// "Update-Daily.csv".
std::string UpdateFileName(Period period);

// Every function below returns false with `error` set when a file cannot be written.
bool WriteMasterFile(const std::string& path, const Universe& universe, int data_set,
                     std::string& error);
// The last rows of every composite of the data set, oldest first, composites interleaved: all
// composites' fifth-newest row, then all fourth-newest, ... Each line is the service symbol padded
// to 15 characters, a blank and the row.
bool WriteUpdateFile(const std::string& path, const Universe& universe, int data_set, Period period,
                     const std::vector<std::array<RowTail, kPeriodCount>>& tails,
                     std::string& error);
// Message kinds "-1", "0", "1" and "empty" (a blank first line); "none" writes no file.
bool IsMessageKind(std::string_view kind);
bool WriteSystemMessage(const std::string& path, std::string_view kind, std::string& error);

bool SaveTreeInfo(const std::string& root, const TreeInfo& info, std::string& error);
bool LoadTreeInfo(const std::string& root, TreeInfo& info, std::string& error);

}  // namespace corvanet::demo
