// The desktop program: start-up as the command line does it, then the window, or an unattended
// run of the list named in RunListNum.txt that closes the program when it ends.
#include <QApplication>
#include <QMessageBox>
#include <QTimer>
#include <cstdlib>
#include <string>

#include "core/app/startup.h"
#include "core/platform/clock.h"
#include "core/platform/http.h"
#include "core/platform/paths.h"
#include "core/platform/text.h"
#include "core/state/log.h"
#include "gui/main_window.h"
#include "gui/qt_shell.h"

namespace {

struct Options {
  std::string base_directory;
  bool log = false;
  // Undocumented: render the window, save a picture of it and quit (layout checks).
  std::string screenshot;
  int screenshot_tab = -1;
};

bool ParseOptions(const QStringList& args, Options& options, std::string& error) {
  for (qsizetype i = 1; i < args.size(); ++i) {
    const std::string arg = args[i].toStdString();
    const bool has_value = i + 1 < args.size();
    if (arg == "--log") {
      options.log = true;
    } else if (arg == "--base-dir" && has_value && !args[i + 1].isEmpty()) {
      options.base_directory = corvanet::WithTrailingSeparator(args[++i].toStdString());
    } else if (corvanet::StartsWith(arg, "--base-dir=") && arg.size() > 11) {
      options.base_directory = corvanet::WithTrailingSeparator(arg.substr(11));
    } else if (arg == "--screenshot" && has_value) {
      options.screenshot = args[++i].toStdString();
    } else if (arg == "--screenshot-tab" && has_value) {
      options.screenshot_tab = args[++i].toInt();
    } else {
      error = "unknown option or missing value: " + arg;
      return false;
    }
  }
  return true;
}

long HttpTimeoutFromEnvironment() {
  if (const char* text = std::getenv("CORVANET_HTTP_TIMEOUT")) {
    int seconds = 0;
    if (corvanet::ParseInteger(text, seconds) && seconds > 0) return seconds;
  }
  return 60;
}

void ScheduleScreenshot(corvanet::gui::MainWindow& window, const Options& options) {
  if (options.screenshot_tab >= 0) window.tabs()->setCurrentIndex(options.screenshot_tab);
  QTimer::singleShot(500, &window, [&window, file = options.screenshot] {
    const bool saved = window.grab().save(QString::fromStdString(file));
    QApplication::exit(saved ? 0 : 1);
  });
}

}  // namespace

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  Options options;
  std::string error;
  if (!ParseOptions(QApplication::arguments(), options, error)) {
    QMessageBox::critical(
        nullptr, "Corvanet",
        QString::fromStdString(error) + "\nUsage: corvanet [--base-dir DIR] [--log]");
    return 2;
  }

  corvanet::gui::QtShell shell;
  corvanet::SystemHttpClient http;
  corvanet::SystemClock clock;
  corvanet::Session session(shell, http, clock);
  session.http_timeout_seconds = HttpTimeoutFromEnvironment();

  corvanet::StartupOptions startup;
  startup.base_directory =
      options.base_directory.empty() ? corvanet::DefaultBaseDirectory() : options.base_directory;
  if (!corvanet::Form_Load(session, startup)) {
    QMessageBox::critical(nullptr, "Corvanet",
                          QString::fromStdString("Start-up failed: " + session.app.StartupProblem));
    return 1;
  }
  if (options.log) {
    session.ui.GenerateLogFile = 1;
    corvanet::GenerateLogFile_Click(session);
  }

  corvanet::gui::MainWindow window(session);
  window.show();
  if (session.app.RunListNum >= 1) {
    // An unattended start: the run shows its progress, then the window closes without a question
    // (a number above 7 selects nothing and closes at once). A picture is taken of the end state.
    if (!options.screenshot.empty()) {
      QObject::connect(&window, &corvanet::gui::MainWindow::WorkFinished, &window,
                       [&] { ScheduleScreenshot(window, options); });
    }
    window.StartUnattendedRun(options.screenshot.empty());
  } else if (!options.screenshot.empty()) {
    ScheduleScreenshot(window, options);
  }
  return QApplication::exec();
}
