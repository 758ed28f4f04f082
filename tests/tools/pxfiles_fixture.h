#pragma once
// Runs the MetaStock converter the way the batch files do (a process per price file, the log in
// the program folder) on price files the tests write, shaped as the run writes them.
#include <gtest/gtest.h>

#include <array>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "support/demo_service.h"
#include "support/metastock_reader.h"
#include "support/test_support.h"

namespace corvanet::test {

struct PriceBar {
  int date = 0;                    // YYYYMMDD
  std::array<double, 6> values{};  // open, high, low, close, volume, open interest
};

// `count` bars on consecutive days from `first_date`, values moving away from `base`.
std::vector<PriceBar> MakeBars(std::size_t count, int first_date, double base);

// The text of a price file: ticker, name, period letter, then date and values by the program's
// number rule (a blank before each value >= 0).
std::string PriceFileText(std::string_view symbol, std::string_view name, char period,
                          const std::vector<PriceBar>& bars, bool header = true,
                          std::string_view line_end = "\r\n");

// Every bar of `security` as written: dates exact, values to float precision.
void ExpectBars(const MetastockSecurity& security, const std::vector<PriceBar>& bars);

// Each file under `folder` (relative path) with its content.
std::map<std::string, std::string> FolderSnapshot(const std::string& folder);

class PxFilesTest : public ::testing::Test {
 protected:
  PxFilesTest();
  // PxFiles with these arguments, logging to program_dir().
  ProgramResult RunPxFiles(const std::vector<std::string>& args);
  // PxFiles -f <price_file> -r fileReplace -o <out>.
  ProgramResult Convert(const std::string& price_file, const std::string& out);
  // Writes `text` as a price file in the test's folder and converts it.
  ProgramResult ConvertText(std::string_view text, const std::string& out,
                            std::string_view file_name = "prices.csv");
  // One shell running the converter on each price file in turn, as a run's batch file does; it
  // stops at the first failure.
  ProgramResult ConvertAll(const std::vector<std::string>& price_files, const std::string& out);
  std::string LastLogLine() const;
  std::string program_dir() const { return dir_ / "program/"; }

  TempDir dir_;
};

}  // namespace corvanet::test
