// The generated data tree: master files, datafile names and contents, period bars against the
// daily bars, update files, determinism, and `advance`.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>

#include "core/platform/field_reader.h"
#include "core/platform/text.h"
#include "support/datafile_validator.h"
#include "support/demo_service.h"

namespace corvanet::test {
namespace {

namespace fs = std::filesystem;

constexpr const char* kPeriods[] = {"Daily", "Weekly", "Monthly", "Quarterly"};

struct MasterLine {
  std::string name;
  std::string symbol;
};

std::vector<MasterLine> ReadMaster(const std::string& path) {
  std::vector<MasterLine> lines;
  for (const std::string& line : ReadLines(path)) {
    const std::vector<std::string> fields = SplitFields(line);
    EXPECT_EQ(std::count(line.begin(), line.end(), ','), 1) << line;
    if (fields.size() == 2) lines.push_back({fields[0], fields[1]});
  }
  return lines;
}

std::string ServiceName(const std::string& list_symbol) {
  static const std::map<std::string, std::string> renamed = {
      {"NYA", "NYSE"},   {"XAX", "AMEX"},  {"COMPQ", "NASDAQ"}, {"SPX", "SP500"},
      {"NDX", "NAS100"}, {"INDU", "DJ30"}, {"TYX", "Rates"}};
  std::string name = list_symbol[0] == '$' ? list_symbol.substr(1) : list_symbol;
  const auto it = renamed.find(name);
  return it == renamed.end() ? name : it->second;
}

// Rows of a datafile split into fields, header dropped.
std::vector<std::vector<std::string>> Rows(const std::string& path) {
  std::vector<std::vector<std::string>> rows;
  const std::vector<std::string> lines = ReadLines(path);
  for (std::size_t i = 1; i < lines.size(); ++i) rows.push_back(SplitFields(lines[i]));
  return rows;
}

double Number(const std::string& text) {
  return LeadingNumber(text);
}

// The key that puts a daily date into its week, month or quarter.
long PeriodKey(const std::string& period, const std::string& date) {
  const int y = std::stoi(date.substr(0, 4)), m = std::stoi(date.substr(4, 2)),
            d = std::stoi(date.substr(6, 2));
  if (period == "Monthly") return y * 100L + m;
  if (period == "Quarterly") return y * 10L + (m - 1) / 3;
  // Weeks: days since a Monday long ago, divided by 7.
  const int a = (14 - m) / 12, yy = y + 4800 - a, mm = m + 12 * a - 3;
  const long julian = d + (153 * mm + 2) / 5 + 365L * yy + yy / 4 - yy / 100 + yy / 400 - 32045;
  return julian / 7;
}

// Every period bar aggregates the daily bars of its period: open, high, low, close, both
// equal-weight prices and all volumes; it is dated on the period's last day; every completed period
// has its bar.
void ExpectAggregated(const std::string& folder, const std::string& symbol,
                      const std::string& period) {
  const auto daily = Rows(folder + symbol + "Daily-CompositeStats.csv");
  const auto bars = Rows(folder + symbol + period + "-CompositeStats.csv");
  std::map<long, std::vector<const std::vector<std::string>*>> groups;
  for (const auto& day : daily) groups[PeriodKey(period, day[1])].push_back(&day);
  std::size_t next_bar = 0;
  std::size_t group_index = 0;
  for (const auto& [key, days] : groups) {
    const bool last_group = ++group_index == groups.size();
    if (next_bar >= bars.size() || bars[next_bar][1] != days.back()->at(1)) {
      EXPECT_TRUE(last_group) << symbol << " " << period << ": no bar for the period ending "
                              << days.back()->at(1);
      continue;
    }
    const auto& bar = bars[next_bar++];
    EXPECT_EQ(bar[0], period.substr(0, 1));
    for (const int open : {3, 49}) EXPECT_EQ(bar[open], days.front()->at(open)) << bar[1];
    for (const int close : {6, 52}) EXPECT_EQ(bar[close], days.back()->at(close)) << bar[1];
    for (const int high : {4, 50}) {
      double highest = 0;
      for (const auto* day : days) highest = std::max(highest, Number(day->at(high)));
      EXPECT_DOUBLE_EQ(Number(bar[high]), highest) << bar[1];
    }
    for (const int low : {5, 51}) {
      double lowest = 1e300;
      for (const auto* day : days) lowest = std::min(lowest, Number(day->at(low)));
      EXPECT_DOUBLE_EQ(Number(bar[low]), lowest) << bar[1];
    }
    for (const int volume : {14, 17, 18, 53}) {
      double sum = 0;
      for (const auto* day : days) sum += Number(day->at(volume));
      EXPECT_DOUBLE_EQ(Number(bar[volume]), sum) << bar[1] << " column " << volume + 1;
    }
  }
  EXPECT_EQ(next_bar, bars.size()) << symbol << " " << period << ": bars without daily rows";
}

TEST(DemoServiceData, MasterFilesListTheDataSetsAndEveryCompositeHasItsDatafiles) {
  DemoService service(DemoServiceOptions{.start = false});
  const auto standard = ReadMaster(service.data_set_folder("data") + "Masterfile2.csv");
  const auto all = ReadMaster(service.data_set_folder("DataAll") + "Masterfile1.csv");
  const auto us = ReadMaster(service.data_set_folder("DataUS") + "MasterfileUS.csv");
  ASSERT_EQ(standard.size(), 12u);
  EXPECT_EQ(all.size(), 14u);
  EXPECT_EQ(standard.front().name, "NYSE Composite (1900 issues)");
  EXPECT_EQ(standard.front().symbol, "$NYA");
  EXPECT_EQ(ReadFile(service.data_set_folder("data") + "Masterfile2.csv").find("\r\n"),
            standard.front().name.size() + 5);

  std::vector<std::string> symbols;
  for (const auto& line : standard) symbols.push_back(line.symbol);
  for (const char* expected : {"$NYA", "$XAX", "$COMPQ", "$SPX", "$NDX", "$INDU", "$TYX", "$SOX",
                               "$DUX", "$TRAN", "XLK"}) {
    EXPECT_NE(std::find(symbols.begin(), symbols.end(), expected), symbols.end()) << expected;
  }
  for (std::size_t i = 0; i < standard.size(); ++i) {
    EXPECT_EQ(all[i].symbol, standard[i].symbol);  // the all-issues set extends the standard one
  }
  for (const auto& line : us) {
    EXPECT_NE(std::find(symbols.begin(), symbols.end(), line.symbol), symbols.end());
  }
  EXPECT_LT(us.size(), standard.size());  // the non-US composite is left out

  for (const auto& [folder, lines] : std::vector<std::pair<std::string, std::vector<MasterLine>>>{
           {"data", standard}, {"DataAll", all}, {"DataUS", us}}) {
    for (const auto& line : lines) {
      for (const char* period : kPeriods) {
        const std::string path = service.data_set_folder(folder) + ServiceName(line.symbol) +
                                 period + "-CompositeStats.csv";
        EXPECT_TRUE(Exists(path)) << path;
      }
    }
  }
}

TEST(DemoServiceData, EveryDatafilePassesTheValidatorAndCarriesItsPeriodLetter) {
  DemoService service(DemoServiceOptions{.start = false});
  int files = 0;
  for (const auto& entry : fs::directory_iterator(service.data_set_folder("DataAll"))) {
    const std::string name = entry.path().filename().string();
    if (name.find("-CompositeStats.csv") == std::string::npos) continue;
    ++files;
    const std::vector<std::string> problems = ValidateDatafile(entry.path().string());
    EXPECT_TRUE(problems.empty()) << name << ": " << problems.front();
    const char letter = name.find("Quarterly") != std::string::npos ? 'Q'
                        : name.find("Monthly") != std::string::npos ? 'M'
                        : name.find("Weekly") != std::string::npos  ? 'W'
                                                                    : 'D';
    EXPECT_EQ(ReadLines(entry.path().string()).at(1).front(), letter) << name;
  }
  EXPECT_EQ(files, 14 * 4);
}

TEST(DemoServiceData, PeriodBarsAggregateTheDailyBars) {
  DemoService service(DemoServiceOptions{.start = false});
  for (const char* symbol : {"NYSE", "DJ30", "Rates"}) {
    for (const char* period : {"Weekly", "Monthly", "Quarterly"}) {
      ExpectAggregated(service.data_set_folder("data"), symbol, period);
    }
  }
}

// The update file of a period holds each composite's five newest rows, oldest first, the
// composites interleaved in master file order: symbol padded to 15 characters, a blank, the row.
void ExpectUpdateFile(const std::string& folder, const std::string& master,
                      const std::string& period) {
  const auto composites = ReadMaster(folder + master);
  const std::vector<std::string> lines = ReadLines(folder + "Update-" + period + ".csv");
  ASSERT_EQ(lines.size(), 5 * composites.size()) << period;
  for (std::size_t age = 0; age < 5; ++age) {
    for (std::size_t c = 0; c < composites.size(); ++c) {
      const std::string& line = lines[age * composites.size() + c];
      const std::string symbol = ServiceName(composites[c].symbol);
      ASSERT_GT(line.size(), 16u);
      EXPECT_EQ(line.substr(0, 15), symbol + std::string(15 - symbol.size(), ' '));
      EXPECT_EQ(line[15], ' ');
      const auto rows = ReadLines(folder + symbol + period + "-CompositeStats.csv");
      EXPECT_EQ(line.substr(16), rows[rows.size() - 5 + age]) << symbol << " " << period;
    }
  }
}

TEST(DemoServiceData, UpdateFilesHoldTheNewestRowsInterleaved) {
  DemoService service(DemoServiceOptions{.start = false});
  for (const char* period : kPeriods) {
    ExpectUpdateFile(service.data_set_folder("data"), "Masterfile2.csv", period);
    ExpectUpdateFile(service.data_set_folder("DataUS"), "MasterfileUS.csv", period);
  }
}

TEST(DemoServiceData, TheSeedDecidesTheData) {
  // 17 well-known composites, then the two generated ones of the all-issues set.
  DemoServiceOptions options{.composites = 17, .years = 1, .seed = 5, .start = false};
  DemoService first(options), second(options);
  options.seed = 6;
  DemoService third(options);
  for (const char* name : {"ovalith/data/NYSEDaily-CompositeStats.csv",
                           "ovalith/DataAll/Masterfile1.csv", "ovalith/data/Update-Monthly.csv"}) {
    EXPECT_EQ(ReadFile(first.root() + name), ReadFile(second.root() + name)) << name;
  }
  EXPECT_NE(ReadFile(first.root() + "ovalith/data/NYSEDaily-CompositeStats.csv"),
            ReadFile(third.root() + "ovalith/data/NYSEDaily-CompositeStats.csv"));
  // The generated composites beyond the standard set differ with the seed too.
  EXPECT_NE(ReadFile(first.root() + "ovalith/DataAll/Masterfile1.csv"),
            ReadFile(third.root() + "ovalith/DataAll/Masterfile1.csv"));
}

std::map<std::string, std::vector<std::string>> DailyFiles(const DemoService& service) {
  std::map<std::string, std::vector<std::string>> files;
  for (const char* folder : {"data", "DataAll", "DataUS"}) {
    for (const auto& entry : fs::directory_iterator(service.data_set_folder(folder))) {
      const std::string name = entry.path().filename().string();
      if (name.find("Daily-CompositeStats.csv") != std::string::npos) {
        files[std::string(folder) + "/" + name] = ReadLines(entry.path().string());
      }
    }
  }
  return files;
}

// The newest row of every symbol in a data set's Update-Daily.csv.
std::map<std::string, std::string> NewestUpdateRows(const std::string& folder) {
  std::map<std::string, std::string> newest;
  for (const std::string& line : ReadLines(folder + "Update-Daily.csv")) {
    newest[std::string(Trim(line.substr(0, 15)))] = line.substr(16);
  }
  return newest;
}

TEST(DemoServiceAdvance, AppendsBarsThatTheUpdateFilesCarry) {
  DemoService service(DemoServiceOptions{.start = false});
  const auto before = DailyFiles(service);

  service.Advance(1);
  auto after = DailyFiles(service);
  ASSERT_EQ(after.size(), before.size());
  for (const auto& [name, lines] : after) {
    const std::string folder = service.root() + "ovalith/" + name.substr(0, name.find('/')) + "/";
    const std::string symbol =
        name.substr(name.find('/') + 1, name.find("Daily-") - name.find('/') - 1);
    ASSERT_EQ(lines.size(), before.at(name).size() + 1) << name;
    EXPECT_TRUE(std::equal(before.at(name).begin(), before.at(name).end(), lines.begin()));
    EXPECT_EQ(lines.back(), NewestUpdateRows(folder).at(symbol)) << name;
    EXPECT_TRUE(ValidateRow(lines.back()).empty()) << name;
  }

  service.Advance(1);
  after = DailyFiles(service);
  for (const auto& [name, lines] : after) {
    ASSERT_EQ(lines.size(), before.at(name).size() + 2) << name;
  }
}

TEST(DemoServiceAdvance, RollsWeeksMonthsAndQuartersOver) {
  DemoService service(DemoServiceOptions{.composites = 4, .start = false});
  const std::string folder = service.data_set_folder("data");
  const std::size_t weekly = ReadLines(folder + "NYSEWeekly-CompositeStats.csv").size();
  const std::size_t monthly = ReadLines(folder + "NYSEMonthly-CompositeStats.csv").size();
  // Five weekdays in a row always hold exactly one Friday.
  service.Advance(5);
  EXPECT_EQ(ReadLines(folder + "NYSEWeekly-CompositeStats.csv").size(), weekly + 1);
  service.Advance(20);  // a month's last weekday is among any 23 weekdays in a row
  EXPECT_GT(ReadLines(folder + "NYSEMonthly-CompositeStats.csv").size(), monthly);
  for (const char* symbol : {"NYSE", "AMEX"}) {
    for (const char* period : {"Daily", "Weekly", "Monthly", "Quarterly"}) {
      const std::string path = folder + symbol + period + "-CompositeStats.csv";
      const auto problems = ValidateDatafile(path);
      EXPECT_TRUE(problems.empty()) << path << ": " << problems.front();
      if (std::string(period) != "Daily") ExpectAggregated(folder, symbol, period);
    }
  }
  for (const char* period : kPeriods) ExpectUpdateFile(folder, "Masterfile2.csv", period);
}

}  // namespace
}  // namespace corvanet::test
