#include "demo_service/catalog.h"

#include <algorithm>
#include <set>

#include "demo_service/random.h"

namespace corvanet::demo {

namespace {

struct KnownComposite {
  const char* name;
  const char* symbol;
  int constituents;
  double start_price;
  double volatility;
  bool us;
};

// The well-known composites come first, so even a small data set holds every symbol the service
// renames, a few it keeps, one without "$" and one that is not in the US set.
constexpr KnownComposite kKnown[] = {
    {"NYSE Composite (1900 issues)", "$NYA", 1900, 6400, 0.011, true},
    {"AMEX Composite (300 issues)", "$XAX", 300, 900, 0.010, true},
    {"Nasdaq Composite (3000 issues)", "$COMPQ", 3000, 2500, 0.015, true},
    {"S&P 500 (500 issues)", "$SPX", 500, 1300, 0.011, true},
    {"Nasdaq 100 (100 issues)", "$NDX", 100, 2300, 0.016, true},
    {"Dow Jones Industrial Ave. (30 issues)", "$INDU", 30, 10500, 0.010, true},
    {"30-Year Treasury Yield (12 issues)", "$TYX", 12, 55, 0.013, true},
    {"Semiconductor Index (30 issues)", "$SOX", 30, 600, 0.022, true},
    {"Dow Jones Utility Ave. (15 issues)", "$DUX", 15, 320, 0.009, true},
    {"Dow Jones Transportation Ave. (20 issues)", "$TRAN", 20, 2900, 0.013, true},
    {"Toronto Composite (230 issues)", "$TSX", 230, 8000, 0.010, false},
    {"Technology Sector Fund (70 issues)", "XLK", 70, 45, 0.014, true},
    {"S&P 100 Index", "$OEX", 100, 650, 0.011, true},
    {"S&P MidCap 400 (400 issues)", "$MID", 400, 500, 0.012, true},
    {"S&P SmallCap 600 (600 issues)", "$SML", 600, 230, 0.013, true},
    {"Russell 2000 (2000 issues)", "$RUT", 2000, 480, 0.014, true},
    {"Europe 350 (350 issues)", "$EUR", 350, 1200, 0.011, false},
};
constexpr int kKnownCount = static_cast<int>(std::size(kKnown));

constexpr const char* kGroups[] = {
    "Regional Banks", "Software",       "Biotechnology",  "Oil and Gas", "Retail",
    "Homebuilders",   "Insurance",      "Airlines",       "Gold Miners", "Medical Devices",
    "Utilities",      "Semiconductors", "Transportation", "Real Estate", "Media",
    "Chemicals",      "Steel",          "Restaurants",    "Telecom",     "Aerospace",
};
constexpr const char* kRegions[] = {"US", "US", "US", "US", "US", "Europe", "Asia"};

struct Renamed {
  std::string_view listed;
  std::string_view service;
};
constexpr Renamed kRenamed[] = {{"NYA", "NYSE"},  {"XAX", "AMEX"},   {"COMPQ", "NASDAQ"},
                                {"SPX", "SP500"}, {"NDX", "NAS100"}, {"INDU", "DJ30"},
                                {"TYX", "Rates"}};

// The client takes an update line as a symbol's when it names the symbol or the symbol without
// its first letter; a universe where one service name is another one minus its first letter
// would mix two composites' rows.
bool Collides(const std::set<std::string>& taken, const std::string& name) {
  if (taken.count(name) != 0) return true;
  if (name.size() > 1 && taken.count(name.substr(1)) != 0) return true;
  for (const std::string& other : taken) {
    if (other.size() > 1 && other.compare(1, std::string::npos, name) == 0) return true;
  }
  return false;
}

Composite MakeGenerated(Random& rng, int id, std::set<std::string>& taken) {
  Composite c;
  c.id = id;
  const char* group = kGroups[rng.Below(static_cast<int>(std::size(kGroups)))];
  const char* region = kRegions[rng.Below(static_cast<int>(std::size(kRegions)))];
  c.us = std::string_view(region) == "US";
  const bool fund = rng.Uniform() < 0.125;
  c.constituents = 12 + rng.Below(fund ? 120 : 700);
  std::string base;
  do {
    base.clear();
    for (int i = 0; i < 3; ++i) base += static_cast<char>('A' + rng.Below(26));
    base += std::to_string(1 + rng.Below(fund ? 9 : 99));
  } while (Collides(taken, base));
  taken.insert(base);
  // Funds are listed without "$", as the service lists ETFs.
  c.list_symbol = fund ? base : "$" + base;
  c.service_symbol = base;
  c.name = std::string(region) + " " + group + (fund ? " Fund" : " Index");
  if (rng.Uniform() < 0.85) c.name += " (" + std::to_string(c.constituents) + " issues)";
  c.start_price = std::round(rng.Uniform(20, 2000));
  c.volatility = rng.Uniform(0.008, 0.022);
  c.drift = rng.Uniform(-0.0001, 0.0005);
  c.volume_per_issue = std::round(rng.Uniform(50000, 1500000));
  return c;
}

}  // namespace

std::string ServiceSymbol(std::string_view list_symbol) {
  if (!list_symbol.empty() && list_symbol.front() == '$') list_symbol.remove_prefix(1);
  for (const Renamed& r : kRenamed) {
    if (list_symbol == r.listed) return std::string(r.service);
  }
  return std::string(list_symbol);
}

Universe::Universe(std::uint64_t seed, int standard_count) : standard_count_(standard_count) {
  const int total = standard_count + std::max(2, standard_count / 10);
  composites_.reserve(static_cast<std::size_t>(total));
  std::set<std::string> taken;
  Random rng(seed, 0xC0FFEE);
  for (int id = 0; id < total; ++id) {
    if (id < kKnownCount) {
      const KnownComposite& k = kKnown[id];
      Composite c;
      c.id = id;
      c.name = k.name;
      c.list_symbol = k.symbol;
      c.service_symbol = ServiceSymbol(k.symbol);
      c.constituents = k.constituents;
      c.start_price = k.start_price;
      c.volatility = k.volatility;
      c.us = k.us;
      // Yields wander around a level rather than compound upward.
      if (c.service_symbol == "Rates") {
        c.drift = 0;
        c.reversion = 0.004;
      }
      c.volume_per_issue = std::round(rng.Uniform(200000, 900000));
      taken.insert(c.service_symbol);
      composites_.push_back(std::move(c));
    } else {
      composites_.push_back(MakeGenerated(rng, id, taken));
    }
  }
}

bool Universe::InDataSet(const Composite& composite, int data_set) const {
  const bool standard = composite.id < standard_count_;
  switch (data_set) {
    case 0:
      return standard;
    case 1:
      return true;
    case 2:
      return standard && composite.us;
    default:
      return false;
  }
}

}  // namespace corvanet::demo
