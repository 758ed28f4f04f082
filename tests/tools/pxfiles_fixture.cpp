#include "tools/pxfiles_fixture.h"

#include <chrono>
#include <filesystem>

#include "core/platform/text.h"

namespace corvanet::test {

std::vector<PriceBar> MakeBars(std::size_t count, int first_date, double base) {
  using namespace std::chrono;
  sys_days day =
      year_month_day{year{first_date / 10000}, month{static_cast<unsigned>(first_date / 100 % 100)},
                     std::chrono::day{static_cast<unsigned>(first_date % 100)}};
  std::vector<PriceBar> bars(count);
  for (std::size_t i = 0; i < count; ++i, day += days{1}) {
    const year_month_day date{day};
    const double open = base + static_cast<double>(i) * 0.37;
    bars[i].date = static_cast<int>(date.year()) * 10000 +
                   static_cast<int>(static_cast<unsigned>(date.month())) * 100 +
                   static_cast<int>(static_cast<unsigned>(date.day()));
    bars[i].values = {open,
                      open + 1.5,
                      open - 1.25,
                      open + 0.5,
                      2.5e9 + static_cast<double>(i) * 12345.0,
                      static_cast<double>(i % 7)};
  }
  return bars;
}

std::string PriceFileText(std::string_view symbol, std::string_view name, char period,
                          const std::vector<PriceBar>& bars, bool header,
                          std::string_view line_end) {
  std::string text;
  if (header) text.append("<ticker>,<name>,<per>,<date>,<open>,<high>,<low>,<close>,<vol>,<o/i>");
  if (header) text.append(line_end);
  for (const PriceBar& bar : bars) {
    text.append(symbol).append(",").append(name).append(",").append(1, period).append(",");
    AppendNumber(text, bar.date);
    for (double value : bar.values) AppendNumber(text.append(","), value);
    text.append(line_end);
  }
  return text;
}

void ExpectBars(const MetastockSecurity& security, const std::vector<PriceBar>& bars) {
  SCOPED_TRACE(security.symbol);
  ASSERT_EQ(security.bars.size(), bars.size());
  EXPECT_EQ(security.first_date, bars.front().date);
  EXPECT_EQ(security.last_date, bars.back().date);
  for (std::size_t i = 0; i < bars.size(); ++i) {
    EXPECT_EQ(security.bars[i].date, bars[i].date) << "bar " << i;
    for (std::size_t v = 0; v < 6; ++v) {
      EXPECT_FLOAT_EQ(static_cast<float>(security.bars[i].values[v]),
                      static_cast<float>(bars[i].values[v]))
          << "bar " << i << " value " << v;
    }
  }
}

std::map<std::string, std::string> FolderSnapshot(const std::string& folder) {
  std::map<std::string, std::string> files;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    if (!entry.is_regular_file()) continue;
    files[std::filesystem::relative(entry.path(), folder).string()] =
        ReadFile(entry.path().string());
  }
  return files;
}

PxFilesTest::PxFilesTest() {
  std::filesystem::create_directories(program_dir());
}

ProgramResult PxFilesTest::RunPxFiles(const std::vector<std::string>& args) {
  std::vector<std::string> words = {"CORVANET_PROGRAM_DIRECTORY=" + program_dir(),
                                    BinaryPath("PxFiles")};
  words.insert(words.end(), args.begin(), args.end());
  return RunProgram("/usr/bin/env", words);
}

ProgramResult PxFilesTest::Convert(const std::string& price_file, const std::string& out) {
  return RunPxFiles({"-f", price_file, "-r", "fileReplace", "-o", out});
}

ProgramResult PxFilesTest::ConvertText(std::string_view text, const std::string& out,
                                       std::string_view file_name) {
  const std::string path = dir_ / file_name;
  WriteFile(path, text);
  return Convert(path, out);
}

ProgramResult PxFilesTest::ConvertAll(const std::vector<std::string>& price_files,
                                      const std::string& out) {
  std::string batch;
  for (const std::string& file : price_files) {
    batch += "'" + BinaryPath("PxFiles") + "' -f '" + file + "' -r fileReplace -o '" + out + "'\n";
  }
  WriteFile(dir_ / "convert.sh", batch);
  return RunProgram("/usr/bin/env", {"CORVANET_PROGRAM_DIRECTORY=" + program_dir(), "/bin/sh", "-e",
                                     dir_ / "convert.sh"});
}

std::string PxFilesTest::LastLogLine() const {
  const std::vector<std::string> lines = ReadLines(program_dir() + "MSXlog.txt");
  return lines.empty() ? "" : lines.back();
}

}  // namespace corvanet::test
