#pragma once
// A window over a session in a fresh installation. Message boxes are recorded and answered from a
// queue instead of waiting for a person; documents and the file dialog open nothing. Fetches fail
// at once, as if no service were reachable, unless the test asks for the real client
// (GuiServiceTest points it at the demo service).
#include <gtest/gtest.h>

#include <QApplication>
#include <deque>
#include <memory>
#include <vector>

#include "core/app/startup.h"
#include "core/platform/clock.h"
#include "core/platform/http.h"
#include "gui/main_window.h"
#include "gui/qt_shell.h"
#include "support/test_support.h"

namespace corvanet::test {

class UnreachableHttp final : public HttpClient {
 public:
  FetchResult FetchToFile(const FetchRequest&, const std::string&) override {
    FetchResult result;
    result.status = FetchStatus::kCouldNotConnect;
    return result;
  }
};

struct RecordedMessage {
  gui::MessageRequest request;
};

class GuiTest : public testing::Test {
 protected:
  enum class Network { kUnreachable, kLoopback };

  explicit GuiTest(Network network = Network::kUnreachable)
      : shell_(gui::DesktopActions{
            [this](const gui::MessageRequest& r) { return Answer(r); },
            [](const std::string&) { return true; },
            [](const std::string&, const std::string&) { return std::string(); },
            [this](const std::string& path, std::string& now_at) {
              return trash && trash(path, now_at);
            }}),
        session_(shell_, network == Network::kLoopback ? static_cast<HttpClient&>(curl_) : http_,
                 clock_) {
    StartupOptions options;
    options.base_directory = dir_.path();
    options.start_directory = dir_.path();
    options.change_directory = false;
    EXPECT_TRUE(Form_Load(session_, options));
    window_ = std::make_unique<gui::MainWindow>(session_);
  }

  // Runs the window's events until the condition holds or the deadline passes.
  static bool ProcessUntil(const std::function<bool()>& condition,
                           std::chrono::milliseconds deadline = std::chrono::seconds(10)) {
    const auto end = std::chrono::steady_clock::now() + deadline;
    while (!condition()) {
      if (std::chrono::steady_clock::now() > end) return false;
      QApplication::processEvents(QEventLoop::AllEvents, 20);
    }
    return true;
  }

  template <typename Widget>
  Widget* Find(const char* name) {
    auto* widget = window_->findChild<Widget*>(name);
    EXPECT_NE(widget, nullptr) << name;
    return widget;
  }

  std::vector<RecordedMessage> messages;
  std::deque<corvanet::Answer> answers;  // consumed by questions; Ok boxes take none
  // Called with each box as it comes up, on the window's thread, before it is answered.
  std::function<void(const gui::MessageRequest&)> on_message;
  // The desktop's trash; empty: there is none, and files are deleted.
  std::function<bool(const std::string&, std::string&)> trash;

  TempDir dir_;
  UnreachableHttp http_;
  SystemHttpClient curl_;
  ManualClock clock_;
  gui::QtShell shell_;
  Session session_;
  std::unique_ptr<gui::MainWindow> window_;

 private:
  corvanet::Answer Answer(const gui::MessageRequest& request) {
    messages.push_back({request});
    if (on_message) on_message(request);
    if (request.buttons == Buttons::kOk) return corvanet::Answer::kOk;
    if (answers.empty()) return corvanet::Answer::kNo;
    const corvanet::Answer answer = answers.front();
    answers.pop_front();
    return answer;
  }
};

}  // namespace corvanet::test
