#include "core/pricefiles/conversion.h"

#include <gtest/gtest.h>

#include <atomic>

#include "core/app/settings.h"
#include "support/test_session.h"

namespace corvanet {
namespace {

// Stop pressed while the first of two batches runs: that one is waited for as always, the second
// is not started (it would only be given up on and left running beside the next run), and both
// are reported as not converted.
TEST(RunConverterBatchesTest, NoBatchStartsAfterStop) {
  test::TestSession ts;
  Session& session = ts.session;
  session.ui.MakeMetaStockPxFiles = 1;
  SetCheck(session, "OHLCVV", 1);
  SetCheck(session, "EqWtOHLCVV", 1);
  std::atomic<bool> stop{false};
  session.stop_requested = &stop;
  ts.shell.on_start = [&stop] { stop = true; };
  ConversionLedger ledger;
  ledger.kinds[0].calls.push_back({"$NYA", 3, ts.base("MetaStock/Daily"), "$NYA.csv Daily"});
  ledger.kinds[1].calls.push_back({"$NYA", 3, ts.base("MetaStock/Daily"), "$NYA.csv Daily"});

  const std::vector<ConversionOutcome> outcomes = RunConverterBatches(session, ledger);

  ASSERT_EQ(ts.shell.started.size(), 1U);
  EXPECT_EQ(ts.shell.started[0], session.ui.PathToLists + "MakePxFiles.bat");
  ASSERT_EQ(outcomes.size(), 2U);
  EXPECT_EQ(outcomes[0].failed, 1);
  EXPECT_EQ(outcomes[1].batch_file, "MakeEqWtPxFiles.bat");
  EXPECT_EQ(outcomes[1].failed, 1);
  EXPECT_EQ(outcomes[1].problem, "not run: the run was stopped");
}

}  // namespace
}  // namespace corvanet
