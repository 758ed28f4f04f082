#pragma once
// The window against the demo data service on 127.0.0.1: the user types the log-in and the
// service's address into the fields, clicks the buttons, and the run fetches over real HTTP.
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

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

  // Waits for long work the window started by itself (a fetch after saving) to end.
  bool WaitUntilIdle() {
    return ProcessUntil([this] { return !window_->running(); }, std::chrono::seconds(30));
  }

  // How often the service was asked for a path holding this text.
  int Requests(const std::string& path_part) const {
    int count = 0;
    const std::string log = service.log();
    for (std::size_t pos = log.find(path_part); pos != std::string::npos;
         pos = log.find(path_part, pos + 1)) {
      ++count;
    }
    return count;
  }

  DemoService service;
};

}  // namespace corvanet::test
