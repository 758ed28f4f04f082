// The service's message file and the completion message at the end of a run.
#include "core/download/system_messages.h"

#include <gtest/gtest.h>

#include "core/download/download_fixture.h"

namespace corvanet::test {
namespace {

class SystemMessagesTest : public ::testing::Test, public DownloadFixture {
 protected:
  void SetUp() override {
    session.app.CurrentListNumber = "3";
    clock.now = {2026, 11, 23, 14, 5, 9};
  }
  void MessageFile(const std::vector<std::string>& lines) {
    WriteLines(base("Zennor_System.txt"), lines);
  }
  void Options(bool system_messages, bool completion) {
    session.ui.SystemMessagesYes = system_messages;
    session.ui.SystemMessagesNo = !system_messages;
    session.ui.DownloadCompleteMessageYes = completion;
    session.ui.DownloadCompleteMessageNo = !completion;
  }
  static constexpr const char* kCompletion =
      "Update for Download List 3 completed on 2026-11-23 at 14:05:09\rElapsed Time = 1.50 Seconds";
};

TEST_F(SystemMessagesTest, AnInvitationAsksOnceAndOpensTheAddressOnlyOnYes) {
  MessageFile({"1", "http://service.example/news", "Visit us"});
  Options(true, true);
  RetrieveSystemMessages(session, "1.50 Seconds");
  ASSERT_EQ(shell.boxes.size(), 1u);
  EXPECT_EQ(shell.boxes[0].buttons, Buttons::kYesNo);
  EXPECT_EQ(shell.boxes[0].title, "Corvanet System Message");
  EXPECT_EQ(shell.boxes[0].text, std::string("Visit us \r") + kCompletion +
                                     "\r\rDo you want to go to the web site now?\r");
  EXPECT_TRUE(shell.opened.empty());

  shell.answers.push_back(Answer::kYes);
  Options(true, false);
  RetrieveSystemMessages(session, "1.50 Seconds");
  EXPECT_EQ(shell.boxes.back().text, "Visit us \r");
  EXPECT_EQ(shell.opened, std::vector<std::string>{"http://service.example/news"});
}

TEST_F(SystemMessagesTest, WithoutTheCompletionMessageOnlyANoticeIsShown) {
  Options(true, false);
  MessageFile({"", "", "Nothing to say"});
  RetrieveSystemMessages(session, "1.50 Seconds");
  EXPECT_TRUE(shell.boxes.empty());

  MessageFile({"0", "", "Line one", "Line two"});
  RetrieveSystemMessages(session, "1.50 Seconds");
  ASSERT_EQ(shell.boxes.size(), 1u);
  EXPECT_EQ(shell.boxes[0].text, "Line one\rLine two \r") << "all lines joined without an exit";
}

TEST_F(SystemMessagesTest, AMissingOrShortFileNeverStopsTheRunsEnd) {
  Options(true, true);
  RetrieveSystemMessages(session, "1.50 Seconds");
  MessageFile({"0"});
  RetrieveSystemMessages(session, "1.50 Seconds");
  ASSERT_EQ(shell.boxes.size(), 2u);
  EXPECT_EQ(shell.boxes[0].text, std::string(" \r") + kCompletion);
}

TEST_F(SystemMessagesTest, SystemMessagesOffLeavesTheFileUnread) {
  MessageFile({"0", "", "A notice"});
  Options(false, true);
  RetrieveSystemMessages(session, "1.50 Seconds");
  ASSERT_EQ(shell.boxes.size(), 1u);
  EXPECT_EQ(shell.boxes[0].text, kCompletion);
}

}  // namespace
}  // namespace corvanet::test
