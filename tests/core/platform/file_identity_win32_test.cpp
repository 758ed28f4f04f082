// A file's identity on Windows counts time as on POSIX, in nanoseconds since 1970: the merge index
// keeps these numbers, and the system's own count (100 ns ticks since 1601) no longer fits 64 bits
// once made nanoseconds.
#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "core/platform/file_access.h"
#include "support/test_support.h"

namespace corvanet::test {
namespace {

TEST(FileIdentityWin32, TimesAreNanosecondsSince1970AndStayPut) {
  TempDir dir;
  const std::string path = dir / "datafile.csv";
  WriteFile(path, "20250619,1\r\n");
  const auto identity = IdentityOf(path);
  ASSERT_TRUE(identity);
  const auto now = std::chrono::duration_cast<std::chrono::nanoseconds>(
                       std::chrono::system_clock::now().time_since_epoch())
                       .count();
  constexpr std::int64_t kHour = 3'600'000'000'000;
  for (const std::int64_t time : {identity->modified_ns, identity->changed_ns}) {
    EXPECT_GT(time, now - kHour);
    EXPECT_LT(time, now + kHour);
  }
  EXPECT_EQ(identity->size, 12u);
  // Reading it again, with nothing changed, gives the same identity.
  EXPECT_EQ(IdentityOf(path), identity);
}

}  // namespace
}  // namespace corvanet::test
