// Statistic and price files of an "All Periods" list: all 34 statistics plus the traditional and
// equal-weight price files of every datafile.
//
//   stat_files_bench generate DIR [COMPOSITES] [YEARS]   lays out an installation with datafiles
//   stat_files_bench split DIR [OUT]                     writes the files, prints times and memory
//
// The files land in DIR/CSVFiles/<statistic>/<period>/ and DIR/CSVFiles/PX|PxEqWt/<period>/, or,
// with OUT, in a data folder DIR/OUT/ whose period folders link to those of DIR/CSVFiles: each
// timed pass then writes into folders of its own, as a first pass does, and none is slowed by
// the file system still sorting out the files an earlier pass deleted.
#include <sys/resource.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include "core/app/settings.h"
#include "core/app/settings_buttons.h"
#include "core/download/datafile_names.h"
#include "core/lists/symbols.h"
#include "core/platform/clock.h"
#include "core/platform/files.h"
#include "core/platform/headless_shell.h"
#include "core/platform/http.h"
#include "core/platform/paths.h"
#include "core/pricefiles/price_files.h"
#include "core/state/session.h"
#include "core/stats/single_stat_files.h"
#include "core/stats/statistic_catalogue.h"

namespace {

using namespace corvanet;
using Clock = std::chrono::steady_clock;

std::string Symbol(int i) {
  char text[16];
  std::snprintf(text, sizeof text, "$C%03d", i);
  return text;
}

// A small, fast generator: the data only has to look like breadth data, not be it.
struct Random {
  std::uint64_t state = 88172645463325252ULL;
  std::uint64_t Next() {
    state ^= state << 13;
    state ^= state >> 7;
    state ^= state << 17;
    return state;
  }
  int Int(int limit) { return static_cast<int>(Next() % static_cast<std::uint64_t>(limit)); }
};

// Bars of one period over `years` years back from the end of 2022, oldest first.
std::vector<std::chrono::year_month_day> BarDates(int period, int years) {
  using namespace std::chrono;
  std::vector<year_month_day> dates;
  const sys_days first = sys_days{year{2022 - years + 1} / January / 1};
  const sys_days last = sys_days{year{2022} / December / 31};
  for (sys_days day = first; day <= last; day += days{1}) {
    const year_month_day ymd{day};
    const weekday wd{day};
    const bool weekday_bar = wd != Saturday && wd != Sunday;
    const bool month_end = year_month_day{day + days{1}}.month() != ymd.month();
    const unsigned m = static_cast<unsigned>(ymd.month());
    if ((period == 0 && weekday_bar) || (period == 1 && wd == Friday) ||
        (period == 2 && month_end) || (period == 3 && month_end && m % 3 == 0)) {
      dates.push_back(ymd);
    }
  }
  return dates;
}

void AppendFixed2(std::string& out, long hundredths) {
  char text[32];
  std::snprintf(text, sizeof text, "%ld.%02ld", hundredths / 100, hundredths % 100);
  out += text;
}

std::string Row(Random& random, char period, const std::chrono::year_month_day& date) {
  const int y = static_cast<int>(date.year());
  const unsigned m = static_cast<unsigned>(date.month());
  const unsigned d = static_cast<unsigned>(date.day());
  char head[64];
  std::snprintf(head, sizeof head, "%c,%04d%02u%02u,%02u/%02u/%04d", period, y, m, d, m, d, y);
  std::string row = head;
  const long close = 800000 + random.Int(400000);
  const auto price = [&](long spread) {
    row += ',';
    AppendFixed2(row, close + random.Int(static_cast<int>(spread)) - spread / 2);
  };
  const auto count = [&](int limit) { row += ',' + std::to_string(random.Int(limit)); };
  const auto volume = [&] { row += ',' + std::to_string(100000000LL + random.Int(900000000)); };
  for (int i = 0; i < 4; ++i) price(4000);   // open, high, low, close
  for (int i = 0; i < 3; ++i) price(20000);  // trend channel, pivot
  for (int i = 0; i < 4; ++i) count(2000);   // trends
  volume();                                  // total volume
  count(3000), count(3000);                  // advances, declines
  volume(), volume();                        // up and down volume
  for (int i = 0; i < 4; ++i) count(500);    // new highs, new lows, traded, unchanged
  for (int i = 0; i < 5; ++i) {              // percentages
    row += ',';
    AppendFixed2(row, random.Int(10000));
  }
  for (int i = 0; i < 15; ++i) count(3000);  // above, below, equal the averages
  for (int i = 0; i < 6; ++i) count(200);    // Q and first-day counts
  for (int i = 0; i < 4; ++i) price(4000);   // equal-weight prices
  volume();                                  // trade volume
  for (int i = 0; i < 14; ++i) count(10);    // FV2 ... FV15
  return row;
}

std::string Header() {
  std::string header = "Per";
  for (int c = 2; c <= 68; ++c) header += ",Field" + std::to_string(c);
  return header;
}

int Generate(const std::string& root, int composites, int years) {
  Random random;
  const std::string data = root + Folder("CSVFiles");
  std::string master;
  for (int i = 1; i <= composites; ++i)
    master += "Composite " + std::to_string(i) + "," + Symbol(i) + "\r\n";
  CreateFolders(root + Folder("Lists"));
  WriteWholeFile(root + "Masterfile2.csv", master);
  WriteWholeFile(root + Folder("Lists") + "Download7.csv",
                 "eSignal,eSignal\r\nDailyInterval,1\r\nWeeklyInterval,1\r\nMonthlyInterval,1\r\n"
                 "QuarterlyInterval,1\r\n" +
                     master);
  std::size_t bytes = 0;
  for (int p = 0; p < 4; ++p) {
    const std::string folder = data + Folder(kPeriodNames[p]);
    CreateFolders(folder);
    const std::vector<std::chrono::year_month_day> dates = BarDates(p, years);
    for (int i = 1; i <= composites; ++i) {
      std::string content = Header() + "\r\n";
      for (const auto& date : dates) content += Row(random, "DWMQ"[p], date) + "\r\n";
      bytes += content.size();
      WriteWholeFile(folder + Symbol(i) + ".csv", content);
    }
  }
  std::printf("generated %d composites x 4 periods, %.1f MB of datafiles\n", composites,
              static_cast<double>(bytes) / 1e6);
  return 0;
}

double Seconds(Clock::time_point since) {
  return std::chrono::duration<double>(Clock::now() - since).count();
}

int Split(const std::string& root, const std::string& out) {
  HeadlessShell shell(std::cout, false);
  SystemHttpClient http;
  SystemClock clock;
  Session session(shell, http, clock);
  AppState& app = session.app;
  WindowState& ui = session.ui;
  app.BaseDirectory = root;
  app.ProgramDirectory = root;
  app.MasterFileName = "Masterfile2.csv";
  ui.PathToDataFiles = root + Folder("CSVFiles");
  if (!out.empty()) {
    const std::string linked = root + Folder(out);
    CreateFolders(linked);
    for (const std::string_view period : kPeriodNames) {
      std::error_code ec;
      std::filesystem::create_directory_symlink(
          std::filesystem::absolute(ui.PathToDataFiles + std::string(period)),
          linked + std::string(period), ec);
    }
    ui.PathToDataFiles = linked;
  }
  ui.PathToLists = root + Folder("Lists");
  ui.PathToMSPxFiles = root + Folder("MetaStock");
  ui.VendoreSignal = true;
  ui.DailyInterval = ui.WeeklyInterval = ui.MonthlyInterval = ui.QuarterlyInterval = 1;
  app.CurrentListNumber = "7";
  CreateFolders(ui.PathToMSPxFiles);
  SelectAllStatFiles_Click(session);
  SetCheck(session, "OHLCVV", 1);
  SetCheck(session, "EqWtOHLCVV", 1);
  ui.MakeMetaStockPxFiles = 1;

  // The price files as the run makes them, one datafile after the other.
  std::vector<std::string> symbols;
  {
    std::FILE* master = std::fopen((root + "Masterfile2.csv").c_str(), "rb");
    char line[256];
    while (master != nullptr && std::fgets(line, sizeof line, master) != nullptr) {
      std::string text(line);
      const std::size_t comma = text.find(',');
      symbols.push_back(text.substr(comma + 1, text.find_first_of("\r\n") - comma - 1));
    }
    if (master != nullptr) std::fclose(master);
  }
  const Clock::time_point start = Clock::now();
  for (int p = 1; p <= 4; ++p) {
    DetermineInterval(session, p);
    for (const std::string& symbol : symbols) {
      session.run.DownloadSymbol = symbol;
      session.run.DownloadName = "Composite";
      WebSymbolCorrection(session, symbol);
      SetDatafileNames(session);
      CreateMetaStockPxFiles(session);
    }
  }
  const double price_seconds = Seconds(start);
  const Clock::time_point stats_start = Clock::now();
  StatFilesSummary summary;
  MakeListStatFiles_Click(session, 7, &summary);
  const double stat_seconds = Seconds(stats_start);

  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  std::printf(
      "price files %.2f s, statistic files %.2f s (%d datafiles, %zu failed), total %.2f s, "
      "peak RSS %.1f MiB\n",
      price_seconds, stat_seconds, summary.datafiles, summary.failures.size(),
      price_seconds + stat_seconds, static_cast<double>(usage.ru_maxrss) / 1024.0);
  return summary.failures.empty() ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> args(argv + 1, argv + argc);
  if (args.size() >= 2 && args[0] == "generate") {
    const int composites = args.size() > 2 ? std::atoi(args[2].c_str()) : 300;
    const int years = args.size() > 3 ? std::atoi(args[3].c_str()) : 10;
    return Generate(WithTrailingSeparator(args[1]), composites, years);
  }
  if ((args.size() == 2 || args.size() == 3) && args[0] == "split") {
    return Split(WithTrailingSeparator(args[1]), args.size() == 3 ? args[2] : "");
  }
  std::fprintf(stderr,
               "usage: stat_files_bench generate DIR [COMPOSITES] [YEARS] | split DIR [OUT]\n");
  return 2;
}
