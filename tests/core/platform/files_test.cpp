#include "core/platform/files.h"

#include <gtest/gtest.h>

#include <string>

#include "support/test_support.h"

namespace corvanet::test {
namespace {

// The last line is read from the file's end, first from a short tail: a line or a run of blank
// lines reaching past that tail must still come back whole.
TEST(FileOperationsTest, LastLineOfReadsPastAShortTail) {
  TempDir dir;
  const std::string row(300, 'r');
  const std::string long_row = "D," + std::string(6000, '7');
  const std::string huge_row(70 * 1024, 'h');
  const struct {
    std::string content;
    std::string last;
  } cases[] = {
      {"", ""},
      {"\r\n  \r\n", ""},
      {"header\r\n" + row + "\r\n", row},
      {"header\r\n" + row, row},
      {"header\r\n" + row + "\r\n" + std::string(5000, '\n'), row},
      {std::string(4096 - 3, 'x') + "\r\n" + row + " \t\r\n", row},
      {"header\r\n" + long_row + "\r\n", long_row},
      {long_row, long_row},
      // Longer than any tail: its end is what is read.
      {"header\r\n" + huge_row + "\r\n", huge_row.substr(0, 64 * 1024 - 2)},
  };
  for (const auto& c : cases) {
    WriteFile(dir / "file.csv", c.content);
    EXPECT_EQ(LastLineOf(dir / "file.csv"), c.last) << c.content.size() << " bytes";
  }
  EXPECT_EQ(LastLineOf(dir / "missing.csv"), "");
}

}  // namespace
}  // namespace corvanet::test
