// The chart page and the indicator table over ten years of daily bars:
//
//   chart_bench [BARS]   (default 2600)
//
// Writes a datafile of random-walk breadth data, then times, best of several runs: reading it;
// working out every indicator and writing the CSV table (the `indicators` command's work); the
// chart page drawing the price and three indicator panes from a file already read (filling the
// series and painting the page); switching one pane to another indicator. Run offscreen.
#include <QApplication>
#include <QComboBox>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>

#include "core/indicators/indicator_table.h"
#include "core/platform/files.h"
#include "gui/chart_page.h"

namespace {

using namespace corvanet;
using Clock = std::chrono::steady_clock;

struct Random {
  std::uint64_t state = 88172645463325252ULL;
  int Int(int limit) {
    state ^= state << 13;
    state ^= state >> 7;
    state ^= state << 17;
    return static_cast<int>(state % static_cast<std::uint64_t>(limit));
  }
};

// Weekdays back from the end of 2022, oldest first, each a full 68-column row.
std::string Datafile(int bars) {
  using namespace std::chrono;
  std::vector<year_month_day> days;
  for (sys_days day = sys_days(2022y / December / 30); static_cast<int>(days.size()) < bars;
       day -= std::chrono::days{1}) {
    const weekday w{day};
    if (w != Saturday && w != Sunday) days.emplace_back(day);
  }
  std::reverse(days.begin(), days.end());
  Random random;
  std::string text = "Per";
  for (int c = 2; c <= kCompositeColumnCount; ++c) text += ",Col" + std::to_string(c);
  text += "\r\n";
  double close = 10000;
  char buffer[64];
  for (const year_month_day& d : days) {
    const int y = static_cast<int>(d.year());
    const unsigned m = static_cast<unsigned>(d.month());
    const unsigned day = static_cast<unsigned>(d.day());
    close += random.Int(201) - 100;
    std::snprintf(buffer, sizeof buffer, "D,%04d%02u%02u,%02u/%02u/%04d", y, m, day, m, day, y);
    text += buffer;
    for (const double price : {close - 20, close + 60, close - 70, close}) {
      std::snprintf(buffer, sizeof buffer, ",%.2f", price);
      text += buffer;
    }
    for (int c = 8; c <= kCompositeColumnCount; ++c) {
      text += ',' + std::to_string(c == 15 || c == 18 || c == 19 ? 100000000 + random.Int(900000000)
                                                                 : random.Int(2000));
    }
    text += "\r\n";
  }
  return text;
}

// The best of `runs` timings of `work`, in milliseconds.
double BestMs(int runs, const std::function<void()>& work) {
  double best = 1e300;
  for (int i = 0; i < runs; ++i) {
    const auto start = Clock::now();
    work();
    best = std::min(best, std::chrono::duration<double, std::milli>(Clock::now() - start).count());
  }
  return best;
}

// The page needs a host only for the pages that run handlers; the chart page runs none.
class NoHost final : public gui::PageHost {
 public:
  void Handle(const gui::Handler&) override {}
  void HandleOnWorker(gui::Handler) override {}
  void StartRun(gui::Handler) override {}
  void FetchMasterfileIfMissing() override {}
  Session* IdleSession() override { return nullptr; }
  void ExitClicked(int) override {}
};

}  // namespace

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication app(argc, argv);
  const int bars = argc > 1 ? std::max(1, std::atoi(argv[1])) : 2600;
  const std::filesystem::path work =
      std::filesystem::temp_directory_path() / ("chart_bench." + std::to_string(::getpid()));
  const std::string folder = work.string() + "/";
  CreateFolders(folder + "Daily/");
  const std::string path = folder + "Daily/$B10Y.csv";
  WriteWholeFile(path, Datafile(bars));

  DatafileSeries series;
  DatafileError error;
  const double read_ms =
      BestMs(20, [&] { ReadDatafileSeries(path, NumericColumns(), series, error); });
  std::size_t table_size = 0;
  const double table_ms = BestMs(20, [&] {
    DatafileSeries read;
    ReadDatafileSeries(path, NumericColumns(), read, error);
    table_size = IndicatorTable(read, {}).size();
  });

  NoHost host;
  gui::ChartPage page(host, folder);
  WindowState state;
  state.PathToDataFiles = folder;
  page.resize(1180, 700);
  page.show();
  page.Render(state);
  ChartChoice choice;
  choice.symbol = "$B10Y";
  choice.panes = {"ADLine", "McClellanOscillator", "ShareAbove200ma"};
  // The page reads the file as it loads; its draw is the rest.
  const double load_ms = BestMs(10, [&] {
    page.SetChoice(choice);
    page.grab();
  });
  auto* pane = page.findChild<QComboBox*>("ChartPane2");
  const int trin = pane->findData("TRIN");
  const int oscillator = pane->findData("McClellanOscillator");
  int next = trin;
  const double switch_ms = BestMs(10, [&] {
    pane->setCurrentIndex(next);
    emit pane->activated(next);
    page.grab();
    next = next == trin ? oscillator : trin;
  });
  std::printf("bars %zu (%d asked), datafile %ju bytes\n", series.size(), bars,
              static_cast<std::uintmax_t>(std::filesystem::file_size(path)));
  std::printf("read the datafile:                         %7.2f ms\n", read_ms);
  std::printf("indicators: read, work out all, CSV table: %7.2f ms (%zu bytes)\n", table_ms,
              table_size);
  std::printf("chart, price and three panes drawn:        %7.2f ms after reading (%.2f with it)\n",
              load_ms - read_ms, load_ms);
  std::printf("chart, one pane switched and redrawn:      %7.2f ms\n", switch_ms);
  std::filesystem::remove_all(work);
  return 0;
}
