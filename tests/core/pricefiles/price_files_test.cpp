#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

#include "core/app/settings.h"
#include "core/pricefiles/price_files.h"
#include "core/stats/composite_fixture.h"
#include "support/test_session.h"

namespace corvanet {
namespace {

using test::CompositeLine;
using test::Exists;
using test::ReadFile;
using test::ReadLines;
using test::WriteDatafile;
using Lines = std::vector<std::string>;

const std::string kHeader(kPriceFileHeader);

// The run state of $NYA's daily datafile just after its update, price files switched on.
class PriceFilesTest : public ::testing::Test {
 protected:
  PriceFilesTest() {
    RunState& run = ts.session.run;
    run.DownloadSymbol = "$NYA";
    run.DownloadName = "NYSE Composite";
    run.DataPeriod = "Daily";
    run.DestinationFileName = "$NYA.csv";
    ts.session.ui.MakeMetaStockPxFiles = 1;
  }

  void Tick(std::string_view box) { SetCheck(ts.session, box, 1); }
  void Choose(std::string_view drop_down, std::string_view column) {
    SetSetting(ts.session, *FindSetting(drop_down), column, ValueSource::kUser);
  }
  std::string data(const std::string& relative) const { return ts.data(relative); }

  test::TestSession ts;
};

// Every failure logs the trap line and leaves the price files it concerns as they were: all of
// them when the datafile cannot be read, only its own kind's when a column or folder is at fault.
TEST_F(PriceFilesTest, FailuresLogTheTrapLineAndKeepTheOldFiles) {
  Tick("OHLCVV");
  Tick("UserDefFile2");
  ts.EnableLog();
  const std::string px = data("PX/Daily/$NYA.csv");
  const std::string user = data("PxFile2/Daily/$NYA.csv");
  std::string short_row = CompositeLine().Text();
  short_row.resize(short_row.rfind(','));
  struct Case {
    const char* what;
    std::function<void()> arrange;
    std::string logged;
    bool px_kept = true;
    bool user_kept = true;
  };
  const Case cases[] = {
      {"user column naming Period",
       [&] {
         Choose("Stat4File2", "Period");
         WriteDatafile(data("Daily/$NYA.csv"), {CompositeLine(), CompositeLine()});
       },
       "CreateMetaStockPxFiles Error #  13 - Type mismatch (value column 4 (Stat4File2) names "
       "Period, which holds text, not a price) - $NYA.csv - Daily",
       false},
      {"short row",
       [&] {
         Choose("Stat4File2", "Select One");
         WriteDatafile(data("Daily/$NYA.csv"), {CompositeLine(), short_row});
       },
       "CreateMetaStockPxFiles Error #  62 - Input past end of file (line 3 holds 67 of 68 "
       "fields) - $NYA.csv - Daily"},
      {"empty datafile", [&] { test::WriteFile(data("Daily/$NYA.csv"), ""); },
       "CreateMetaStockPxFiles Error #  62 - Input past end of file (no header line) - $NYA.csv - "
       "Daily"},
      {"missing datafile", [&] { std::filesystem::remove(data("Daily/$NYA.csv")); },
       "CreateMetaStockPxFiles Error #  53 - File not found ("},
      {"missing kind folder",
       [&] {
         WriteDatafile(data("Daily/$NYA.csv"), {CompositeLine()});
         ts.session.ui.UserDefFile1 = 1;  // ticked without its handler: no PxFile1 folders
       },
       "CreateMetaStockPxFiles Error #  76 - Path not found (", false, false},
  };
  for (const Case& c : cases) {
    test::WriteFile(px, "old px\r\n");
    test::WriteFile(user, "old user\r\n");
    c.arrange();
    CreateMetaStockPxFiles(ts.session);
    EXPECT_EQ(ReadFile(px) == "old px\r\n", c.px_kept) << c.what;
    EXPECT_EQ(ReadFile(user) == "old user\r\n", c.user_kept) << c.what;
    EXPECT_TRUE(test::Contains(ts.LogText(), c.logged)) << c.what << "\n" << ts.LogText();
  }
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(data("PX/Daily")), {}), 1)
      << "no temporary file is left behind";
}

}  // namespace
}  // namespace corvanet
