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
                          [](const std::string&, const std::string&) { return std::string(); },
                          {}});
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

}  // namespace
}  // namespace corvanet::test
