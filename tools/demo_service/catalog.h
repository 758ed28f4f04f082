#pragma once
// Which composites a generated data tree holds and in which data sets. The universe is rebuilt
// from the seed and the composite count alone, so `advance` needs no copy of it.
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace corvanet::demo {

struct Composite {
  int id = 0;                  // position in the universe; seeds the composite's random streams
  std::string name;            // master file name, most with a bracketed note "(30 issues)"
  std::string list_symbol;     // as the master file and the user's lists name it: "$NYA"
  std::string service_symbol;  // as the service names its files: "NYSE"
  int constituents = 0;
  double start_price = 100;
  double volatility = 0.012;  // of one daily return
  double drift = 0.0003;      // mean daily log return
  double reversion = 0.0005;  // pull of the price back toward its drifting anchor
  double volume_per_issue = 400000;
  bool us = true;
};

struct DataSet {
  const char* folder;       // under <root>/ovalith/
  const char* master_file;  // the data set's master file, in its folder
};

// The standard set, all issues (a superset) and US issues (a subset of the standard set).
inline constexpr DataSet kDataSets[] = {
    {"data", "Masterfile2.csv"}, {"DataAll", "Masterfile1.csv"}, {"DataUS", "MasterfileUS.csv"}};
inline constexpr int kDataSetCount = 3;
// The folder that holds every composite's files; the other data sets link to them.
inline constexpr int kHomeDataSet = 1;

// The service's form of a list symbol: without its leading "$", and the large indexes by the
// service's own words ($NYA -> NYSE, $INDU -> DJ30, ...).
std::string ServiceSymbol(std::string_view list_symbol);

class Universe {
 public:
  // `standard_count` composites make up the standard data set; a tenth more (at least two) exist
  // only in the all-issues set.
  Universe(std::uint64_t seed, int standard_count);

  const std::vector<Composite>& composites() const { return composites_; }
  bool InDataSet(const Composite& composite, int data_set) const;

 private:
  std::vector<Composite> composites_;
  int standard_count_ = 0;
};

}  // namespace corvanet::demo
