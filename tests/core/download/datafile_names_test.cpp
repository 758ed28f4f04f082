// The look ahead of the walk names a datafile's files as the walk will, without the run state.
#include "core/download/datafile_names.h"

#include <gtest/gtest.h>

#include "core/download/download_fixture.h"

namespace corvanet::test {
namespace {

class DatafileNamesTest : public ::testing::Test, public DownloadFixture {};

TEST_F(DatafileNamesTest, TheLookAheadNamesEveryDatafileAsTheWalkWill) {
  bool WindowState::*const vendors[] = {&WindowState::VendoreSignal, &WindowState::VendorReuters,
                                        &WindowState::VendorYahoo, &WindowState::VendorOther};
  for (bool WindowState::*const vendor : vendors) {
    for (const char* symbol : {"$NYA", "$INDU", "$SOX", "$TRAN", "$COMPQ", "ABC"}) {
      for (const char* period : {"Daily", "Quarterly"}) {
        SCOPED_TRACE(std::string(symbol) + " " + period);
        for (bool WindowState::*const each : vendors) session.ui.*each = each == vendor;
        SelectDatafile(symbol, period);
        EXPECT_EQ(DestinationPathAhead(session, period, symbol), DestinationPath(session));
      }
    }
  }
}

}  // namespace
}  // namespace corvanet::test
