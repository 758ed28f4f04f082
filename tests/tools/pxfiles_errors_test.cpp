// What the converter refuses: usage mistakes (exit 2), and price files or MetaStock folders it
// cannot use (exit 1, a line in MSXlog.txt naming the problem, every file of the folder as it was).
#include <gtest/gtest.h>

#include <filesystem>

#include "tools/pxfiles_fixture.h"

namespace corvanet::test {
namespace {

using PxFilesErrors = PxFilesTest;

std::string Row(std::string_view date, std::string_view close = " 1.5") {
  return "$NYA,NYSE Composite,D, " + std::string(date) + ", 1, 2, .5," + std::string(close) +
         ", 100, 0\r\n";
}
const std::string kHeader =
    "<ticker>,<name>,<per>,<date>,<open>,<high>,<low>,<close>,<vol>,<o/i>\r\n";

std::string TooManyRows() {
  return PriceFileText("$NYA", "NYSE Composite", 'D', MakeBars(65535, 19000101, 1));
}

void Overwrite(const std::string& path, std::size_t at, std::string_view bytes) {
  std::string content = ReadFile(path);
  content.replace(at, bytes.size(), bytes);
  WriteFile(path, content);
}
void Truncate(const std::string& path) {
  std::filesystem::resize_file(path, std::filesystem::file_size(path) - 1);
}

TEST_F(PxFilesErrors, BadInputChangesNoFileAndIsLogged) {
  using Damage = void (*)(const std::string& out);
  struct Case {
    const char* label;
    std::string price;      // the price file's text; "-" for no file at all
    Damage damage;          // done to the converted folder before the bad call
    const char* subfolder;  // the output folder of the bad call, below the converted one
    const char* message;
  } cases[] = {
      {"missing", "-", nullptr, "", "cannot open it: No such file or directory"},
      {"empty", "", nullptr, "", "is empty"},
      {"header only", kHeader, nullptr, "", "holds no bars"},
      {"short line", kHeader + Row("20250102") + "$NYA,NYSE Composite,D, 20250103, 1, 2\r\n",
       nullptr, "", "line 3: only 6 of 10 fields"},
      {"long line", Row("20250102") + Row("20250103", std::string(70000, '1')), nullptr, "",
       "line 2: a line is longer than 65536 bytes"},
      {"not a number", Row("20250102") + Row("20250103", " 1.5x"), nullptr, "",
       "line 2: '1.5x' is not a number"},
      {"no real date", Row("20250102") + Row("20250230"), nullptr, "",
       "line 2: date '20250230' is not a real date"},
      {"dates not rising", Row("20250103") + Row("20250103"), nullptr, "",
       "date 20250103 does not follow 20250103"},
      {"too large for MBF", Row("20250102", " 2E+38"), nullptr, "",
       "line 1: close 2e+38 is too large for the format"},
      {"another ticker", Row("20250102") + "$SOX" + Row("20250103").substr(4), nullptr, "",
       "ticker '$SOX' differs from '$NYA'"},
      {"more bars than a data file holds", TooManyRows(), nullptr, "",
       "line 65536: more than 65534 bars"},
      {"folder cannot be made", Row("20250102"), nullptr, "F1.DAT/Daily",
       "cannot create the folder"},
      {"data file cannot be replaced", "$NEW" + Row("20250102").substr(4),
       [](const std::string& out) { std::filesystem::create_directory(out + "F2.DAT"); }, "",
       "cannot write"},
      {"MASTER truncated", Row("20250102"),
       [](const std::string& out) { Truncate(out + "MASTER"); }, "", "MASTER is truncated"},
      {"MASTER count disagrees", Row("20250102"),
       [](const std::string& out) { Overwrite(out + "MASTER", 0, "\x02"); }, "",
       "MASTER is damaged: its header counts 2 securities, its size 1"},
      {"MASTER garbage", Row("20250102"),
       [](const std::string& out) { Overwrite(out + "MASTER", 53, std::string(53, 'x')); }, "",
       "MASTER is damaged: record 1 is no security record"},
      {"EMASTER truncated", Row("20250102"),
       [](const std::string& out) { Truncate(out + "EMASTER"); }, "", "EMASTER is truncated"},
      {"EMASTER without the record", Row("20250102"),
       [](const std::string& out) { WriteFile(out + "EMASTER", std::string(192, '\0')); }, "",
       "EMASTER is damaged: it has no record for F1.DAT"},
      {"EMASTER missing", Row("20250102"),
       [](const std::string& out) { std::filesystem::remove(out + "EMASTER"); }, "",
       "EMASTER is missing beside MASTER"},
      {"XMASTER truncated", Row("20250102"),
       [](const std::string& out) { WriteFile(out + "XMASTER", std::string(149, '\0')); }, "",
       "XMASTER is truncated"},
      {"XMASTER garbage", Row("20250102"),
       [](const std::string& out) { WriteFile(out + "XMASTER", std::string(300, 'x')); }, "",
       "XMASTER is damaged"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.label);
    const std::string out = dir_ / (std::string(c.label) + "/");
    ASSERT_EQ(ConvertText(Row("20250101"), out, "good.csv").exit_code, 0);
    if (c.damage != nullptr) c.damage(out);
    const auto before = FolderSnapshot(out);
    const std::string price = dir_ / "bad.csv";
    std::filesystem::remove(price);
    if (c.price != "-") WriteFile(price, c.price);

    const ProgramResult run = Convert(price, out + c.subfolder);
    EXPECT_EQ(run.exit_code, 1);
    EXPECT_TRUE(Contains(run.err, c.message)) << run.err;
    const std::string log = LastLogLine();
    EXPECT_TRUE(Contains(log, " Error: " + price + ": ")) << log;
    EXPECT_TRUE(Contains(log, c.message)) << log;
    EXPECT_EQ(FolderSnapshot(out), before);
  }
}

// Each option takes the word after it as its value, so no path can be read as an option: help is
// only ever the sole argument, and a word left over is a usage error, not part of a path.
TEST_F(PxFilesErrors, ValuesAreTakenWholeAndNeverAsOptions) {
  const std::string odd = dir_ / "x -h -o y";
  const std::string price = odd + "/ -f prices.csv";
  WriteFile(price, kHeader + Row("20250102"));
  const std::string out = odd + "/ -r Meta  Stock";
  struct Case {
    std::vector<std::string> args;
    int exit_code;
    const char* said;  // the start of stdout for help, else found in stderr ("" for none)
  };
  const Case cases[] = {
      {{"--help"}, 0, "usage: PxFiles"},
      {{"-h"}, 0, "usage: PxFiles"},
      {{"-f", price, "-r", "fileReplace", "-o", out}, 0, ""},
      {{"-o", out, "-f", price, "-r", "fileReplace"}, 0, ""},
      {{"-f", "-h", "-r", "fileReplace", "-o", out}, 1, "-h: cannot open it"},
      {{"-f", price, "-r", "fileReplace", "-o", out, "-h"}, 2, "unknown argument '-h'"},
      {{"-f", dir_ / "a", "b.csv", "-r", "fileReplace", "-o", out}, 2, "unknown argument 'b.csv'"},
      {{"-f", price, "-r", "fileReplace", "-o"}, 2, "option -o needs a value"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.args.back());
    const ProgramResult run = RunPxFiles(c.args);
    EXPECT_EQ(run.exit_code, c.exit_code) << run.err;
    if (c.exit_code == 0 && *c.said != '\0') {
      EXPECT_EQ(run.out.rfind(c.said, 0), 0U) << run.out;
    } else {
      EXPECT_TRUE(Contains(run.err, c.said)) << run.err;
    }
  }
  const MetastockFolder folder = ReadMetastockFolder(out);
  ASSERT_EQ(folder.securities.size(), 1U);
  EXPECT_EQ(folder.securities[0].bars.size(), 1U);
}

TEST_F(PxFilesErrors, CompleteExeLeavesANonZeroNumberOrSaysWhyNot) {
  WriteFile(dir_ / "Complete.txt", "0\r\n");
  const std::string complete = BinaryPath("Complete.exe");
  ProgramResult run =
      RunProgram("/bin/sh", {"-c", "cd \"$1\" && exec \"$2\"", "sh", dir_.path(), complete});
  ASSERT_EQ(run.exit_code, 0) << run.err;
  EXPECT_EQ(ReadFile(dir_ / "Complete.txt"), "1\r\n");
  EXPECT_EQ(FolderSnapshot(dir_.path()).size(), 1u) << "no temporary file left";

  // A working folder that vanished cannot take the file.
  run = RunProgram("/bin/sh", {"-c", "mkdir \"$1\" && cd \"$1\" && rmdir \"$1\" && exec \"$2\"",
                               "sh", dir_ / "gone", complete});
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_TRUE(Contains(run.err, "cannot write Complete.txt")) << run.err;
}

}  // namespace
}  // namespace corvanet::test
