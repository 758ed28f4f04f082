#pragma once
// What `advance` needs to go on where the last run stopped, kept per composite in a small state
// file outside the served tree: the model's running values and the newest rows of each period,
// from which the update files are rewritten without reading the datafiles.
#include <array>
#include <string>
#include <string_view>

#include "demo_service/calendar.h"
#include "demo_service/market_model.h"

namespace corvanet::demo {

inline constexpr int kUpdateRows = 5;

// The newest rows of one period, oldest first.
class RowTail {
 public:
  void Push(std::string_view row);
  int size() const { return count_; }
  // i = 0 is the oldest of the rows held.
  const std::string& at(int i) const;

 private:
  std::array<std::string, kUpdateRows> rows_;  // reused, so pushing allocates nothing
  int count_ = 0;
  int next_ = 0;
};

struct CompositeState {
  ModelState model;
  std::array<RowTail, kPeriodCount> tails;
};

// Folder of the state files: <root>/.demo-state/ (a dot folder, which the server never serves).
std::string StateFolder(const std::string& root);
std::string StateFilePath(const std::string& root, std::string_view service_symbol);

bool SaveState(const std::string& path, const CompositeState& state, std::string& error);
bool LoadState(const std::string& path, CompositeState& state, std::string& error);

}  // namespace corvanet::demo
