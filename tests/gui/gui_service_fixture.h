#pragma once
// The window against the demo data service on 127.0.0.1: the user types the log-in and the
// service's address into the fields, clicks the buttons, and the run fetches over real HTTP.
#include <QCheckBox>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <string>
#include <vector>

#include "gui_fixture.h"
#include "support/demo_service.h"

namespace corvanet::test {

class GuiServiceTest : public GuiTest {
 protected:
  explicit GuiServiceTest(DemoServiceOptions options = {})
      : GuiTest(Network::kLoopback), service(std::move(options)) {}

  // Types into a field as a user replaces its text: click into it, select everything, type.
  void TypeOver(const char* name, const std::string& text) {
    auto* edit = Find<QLineEdit>(name);
    QTest::mouseClick(edit, Qt::LeftButton);
    edit->selectAll();
    QTest::keyClicks(edit, QString::fromStdString(text));
  }

  // The first thing a new user does: the log-in and the address, then Save Settings.
  void EnterLogIn(const std::string& password) {
    TypeOver("UserName", service.user());
    TypeOver("Password", password);
    TypeOver("IPAddress", service.host_and_port());
  }

  void Click(const char* name) { Find<QPushButton>(name)->click(); }

  // Clicks the download button and waits until the run has ended and the window shows its end.
  void RunAndWait() {
    bool finished = false;
    const auto connection = QObject::connect(window_.get(), &gui::MainWindow::WorkFinished,
                                             [&finished] { finished = true; });
    Click("DownLoadButton");
    EXPECT_TRUE(ProcessUntil([&] { return finished; }, std::chrono::seconds(60)));
    QObject::disconnect(connection);
  }

  // Saves the log-in (the master list is fetched then), and list 1 as a user makes it: daily,
  // eSignal, the indexes found by each search text.
  void SaveLogInAndListOne(const std::vector<std::string>& searches) {
    EnterLogIn(service.password());
    Click("SaveToINI");
    ASSERT_TRUE(WaitUntilIdle());
    Click("DownloadList1");
    Find<QCheckBox>("DailyInterval")->click();
    Find<QRadioButton>("VendoreSignal")->click();
    for (const std::string& text : searches) {
      TypeOver("Text5", text);
      Click("AddByString");
    }
    Click("SaveDownloadList");
  }

  // Waits for long work the window started by itself (a fetch after saving) to end.
  bool WaitUntilIdle() {
    return ProcessUntil([this] { return !window_->running(); }, std::chrono::seconds(30));
  }

  int Requests(const std::string& path_part) const { return service.Requests(path_part); }

  DemoService service;
};

}  // namespace corvanet::test
