// The shell's conversions and its hand-over to the window thread, and the folder picker's result.
#include <gtest/gtest.h>

#include <QApplication>
#include <QThread>
#include <future>

#include "core/platform/files.h"
#include "gui/folder_browse.h"
#include "gui/list_boxes.h"
#include "gui/qt_shell.h"
#include "gui_fixture.h"

namespace corvanet::test {
namespace {

TEST(GuiShell, CarriageReturnsBecomeLineBreaks) {
  EXPECT_EQ(gui::LineBreaksFromCarriageReturns("a\rb"), "a\nb");
  EXPECT_EQ(gui::LineBreaksFromCarriageReturns("a\r\nb\r"), "a\nb\n");
  EXPECT_EQ(gui::LineBreaksFromCarriageReturns("plain"), "plain");
}

TEST(GuiShell, WorkerThreadWaitsForTheAnswerGivenOnTheWindowThread) {
  bool asked_on_window_thread = false;
  gui::MessageRequest seen;
  gui::QtShell shell(
      gui::DesktopActions{[&](const gui::MessageRequest& request) {
                            asked_on_window_thread = QThread::currentThread() == qApp->thread();
                            seen = request;
                            return Answer::kCancel;
                          },
                          [](const std::string&) { return false; },
                          [](const std::string&, const std::string&) { return std::string(); }});
  auto answer = std::async(std::launch::async, [&] {
    return shell.MessageBox("Save?\rReally", "Save Dialog", Buttons::kYesNoCancel, Icon::kQuestion);
  });
  while (answer.wait_for(std::chrono::milliseconds(10)) != std::future_status::ready) {
    QApplication::processEvents();
  }
  EXPECT_EQ(answer.get(), Answer::kCancel);
  EXPECT_TRUE(asked_on_window_thread);
  EXPECT_EQ(seen.text, "Save?\nReally");
  EXPECT_EQ(seen.title, "Save Dialog");
  EXPECT_EQ(seen.buttons, Buttons::kYesNoCancel);
  EXPECT_EQ(seen.icon, Icon::kQuestion);
}

TEST(GuiShell, OnlyTheDeleteKeyMapsToTheDeleteCode) {
  EXPECT_EQ(gui::VirtualKeyCode(Qt::Key_Delete), 46);
  EXPECT_NE(gui::VirtualKeyCode(Qt::Key_Period), 46);
  EXPECT_EQ(gui::VirtualKeyCode(Qt::Key_A), 65);
  EXPECT_EQ(gui::VirtualKeyCode(Qt::Key_F1), 0);
}

using GuiFolderBrowse = GuiTest;

TEST_F(GuiFolderBrowse, ChosenDataFolderGetsItsSeparatorAndPeriodFolders) {
  const std::string chosen = dir_ / "Data";
  ASSERT_TRUE(CreateFolder(chosen));
  gui::ApplyBrowsedFolder(session_, gui::FolderKind::kDataFiles, chosen);
  EXPECT_EQ(session_.ui.PathToDataFiles, chosen + "/");
  for (const char* period : {"Daily", "Weekly", "Monthly", "Quarterly"}) {
    EXPECT_TRUE(DirectoryExists(chosen + "/" + period)) << period;
  }
}

TEST_F(GuiFolderBrowse, CancelKeepsTheFieldAndListFolderGetsNoPeriodFolders) {
  const std::string lists_before = session_.ui.PathToLists;
  gui::ApplyBrowsedFolder(session_, gui::FolderKind::kLists, "");
  EXPECT_EQ(session_.ui.PathToLists, lists_before);
  EXPECT_FALSE(DirectoryExists(lists_before + "Daily"));

  // Cancelled or not, the price-file folder gets its period folders.
  session_.ui.PathToMSPxFiles = dir_ / "Px/";
  ASSERT_TRUE(CreateFolder(session_.ui.PathToMSPxFiles));
  gui::ApplyBrowsedFolder(session_, gui::FolderKind::kMSPxFiles, "");
  EXPECT_TRUE(DirectoryExists(session_.ui.PathToMSPxFiles + "Quarterly"));
  EXPECT_EQ(gui::BrowseTitle(gui::FolderKind::kMSPxFiles),
            "Browse to your composite list directory & 'Save'");
}

}  // namespace
}  // namespace corvanet::test
