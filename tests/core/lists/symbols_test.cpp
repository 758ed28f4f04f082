// The service's names for listed symbols and the Reuters and Yahoo forms of index symbols.
#include "core/lists/symbols.h"

#include <gtest/gtest.h>

#include "core/download/system_messages.h"
#include "support/test_session.h"

namespace corvanet::test {
namespace {

TEST(SymbolFormsTest, VendorFormsOnlyChangeIndexSymbols) {
  const struct {
    const char* listed;
    const char* reuters;
    const char* yahoo;
  } cases[] = {{"$INDU", "_DJI", "^DJI"}, {"$COMPQ", "_IXIC", "^IXIC"}, {"$DUX", "_DJU", "^DJU"},
               {"$TRAN", "_DJT", "^DJT"}, {"$SOX", "_SOXX", "^SOX"},    {"$NYA", "_NYA", "^NYA"},
               {"INDU", "INDU", "INDU"},  {"$indu", "_indu", "^indu"}};
  for (const auto& c : cases) {
    EXPECT_EQ(ReutersForm(c.listed), c.reuters) << c.listed;
    EXPECT_EQ(YahooForm(c.listed), c.yahoo) << c.listed;
    EXPECT_EQ(ReutersForm(ReutersForm(c.listed)), c.reuters) << "a second pass changes nothing";
  }
}

TEST(SymbolFormsTest, CorrectionsFollowTheChosenVendorAndYahooLogsTheReutersName) {
  TestSession t;
  Session& s = t.session;
  t.EnableLog();
  s.run.DownloadSymbol = "$INDU";
  ReutersSymbolCorrection(s);  // Reuters not chosen: unchanged
  EXPECT_EQ(s.run.DownloadSymbol, "$INDU");
  s.ui.VendorYahoo = true;
  YahooSymbolCorrection(s);
  EXPECT_EQ(s.run.DownloadSymbol, "^DJI");
  WebSymbolCorrection(s, "$NYA");
  EXPECT_EQ(s.run.WebSymbol, "NYSE");
  const std::string log = t.LogText();
  EXPECT_EQ(log.find("YahooSymbolCorrection"), std::string::npos);
  const std::string reuters = " - ReutersSymbolCorrection\r\n";
  const std::size_t first = log.find(reuters);
  ASSERT_NE(first, std::string::npos) << log;
  EXPECT_NE(log.find(reuters, first + 1), std::string::npos) << "both corrections log that name";
  EXPECT_EQ(GetSystemMessageFileName(s), "\\Zennor_System.txt");
}

}  // namespace
}  // namespace corvanet::test
