// corvanet-screenshots: drives the window as a new user would, against a running demo service, and
// saves a picture of each step: every page of a fresh installation, the first save of the log-in,
// a list and its search, a run while it goes and after it, a failed run, and the pages at small
// window sizes. Message boxes are pictured too and answered Yes/OK. Run under xvfb-run by
// scripts/screenshots.sh (`make screenshots`).
#include <QApplication>
#include <QCheckBox>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollArea>
#include <QTabWidget>
#include <QTest>
#include <csignal>
#include <cstdio>
#include <fstream>

#include "core/app/startup.h"
#include "core/platform/clock.h"
#include "core/platform/http.h"
#include "gui/chart_page.h"
#include "gui/main_window.h"
#include "gui/qt_shell.h"

namespace {

using corvanet::gui::MainWindow;

struct Options {
  std::string out;      // folder for the pictures, ending with '/'
  std::string base;     // a fresh installation folder, ending with '/'
  std::string service;  // host:port of the demo service
  std::string user;
  std::string password;
  std::string faults_file;  // the service's fault rules, rewritten between steps
  int service_pid = 0;      // stopped for the last run
};

bool ParseOptions(const QStringList& args, Options& o) {
  for (qsizetype i = 1; i + 1 < args.size(); i += 2) {
    const QString key = args[i];
    const std::string value = args[i + 1].toStdString();
    if (key == "--out")
      o.out = value + "/";
    else if (key == "--base-dir")
      o.base = value + "/";
    else if (key == "--service")
      o.service = value;
    else if (key == "--user")
      o.user = value;
    else if (key == "--password")
      o.password = value;
    else if (key == "--faults")
      o.faults_file = value;
    else if (key == "--service-pid")
      o.service_pid = args[i + 1].toInt();
    else
      return false;
  }
  return !o.out.empty() && !o.base.empty() && !o.service.empty() && !o.faults_file.empty();
}

void Wait(int ms) {
  QTest::qWait(ms);
}

bool WaitUntil(const std::function<bool()>& condition, int limit_ms = 60000) {
  for (int waited = 0; !condition(); waited += 20) {
    if (waited > limit_ms) return false;
    QTest::qWait(20);
  }
  return true;
}

class Tour {
 public:
  Tour(const Options& options, MainWindow& window) : o_(options), w_(window) {}

  void Shot(const std::string& name, QWidget* widget = nullptr) {
    Wait(150);  // let queued repaints and layouts settle
    QWidget* target = widget != nullptr ? widget : &w_;
    const std::string path = o_.out + name + ".png";
    // Lossless at the strongest compression: some of these pictures go into the repository.
    if (!target->grab().save(QString::fromStdString(path), "PNG", 0)) {
      std::fprintf(stderr, "could not save %s\n", path.c_str());
    }
    std::printf("%s\n", path.c_str());
  }

  // The whole of a page, also what lies below the window's edge.
  void FullPageShot(const std::string& name, int tab) {
    w_.tabs()->setCurrentIndex(tab);
    auto* scroll = w_.tabs()->widget(tab)->findChild<QScrollArea*>();
    Shot(name, scroll != nullptr ? scroll->widget() : w_.tabs()->widget(tab));
  }

  void Tab(int index) {
    w_.tabs()->setCurrentIndex(index);
    Wait(50);
  }

  template <typename Widget = QWidget>
  Widget* Find(const char* name) {
    auto* widget = w_.findChild<Widget*>(name);
    if (widget == nullptr) std::fprintf(stderr, "no widget %s\n", name);
    return widget;
  }

  void Click(const char* name) {
    if (auto* button = Find<QAbstractButton>(name)) button->click();
    Wait(50);
  }

  void TypeOver(const char* name, const std::string& text) {
    QLineEdit* edit = Find<QLineEdit>(name);
    if (edit == nullptr) return;
    QTest::mouseClick(edit, Qt::LeftButton);
    edit->selectAll();
    QTest::keyClicks(edit, QString::fromStdString(text));
  }

  void Faults(const std::string& rules) { std::ofstream(o_.faults_file, std::ios::trunc) << rules; }

  void Run(const std::function<void()>& during = {}) {
    Click("DownLoadButton");
    if (during) during();
    if (!WaitUntil([this] { return !w_.running(); })) std::fprintf(stderr, "run did not end\n");
    Wait(100);
  }

 private:
  const Options& o_;
  MainWindow& w_;
};

// The chart of the first datafile the run brought in, zoomed to its last months, the cross-hair on
// a bar.
void ShowChart(Tour& t, MainWindow& w) {
  auto* list = t.Find<QListWidget>("List6");
  if (list == nullptr || list->count() == 0) return;
  corvanet::gui::ChartPage* chart = w.chart();
  w.tabs()->setCurrentWidget(chart);
  corvanet::ChartChoice choice;
  choice.symbol = corvanet::SymbolOfListItem(list->item(0)->text().toStdString());
  choice.panes = {"ADLine", "McClellanOscillator", "ShareAbove200ma"};
  chart->SetChoice(choice);
  const corvanet::TimeWindow whole = chart->window();
  chart->ZoomAt(whole.last, 0.4);
  chart->HoverAt(chart->window().first + chart->window().width() * 0.6);
  t.Shot("15-chart");
}

void TakeTheTour(const Options& o, MainWindow& w) {
  Tour t(o, w);
  const char* page_names[] = {"introduction", "setup", "general", "download", "special"};
  t.Tab(0);
  t.Shot("01-introduction");
  t.Tab(1);
  t.Click("FullDownloads");
  t.Shot("02-setup-full-downloads");
  t.Tab(3);
  t.Shot("03-download-new-installation");

  // The log-in, saved for the first time: the master list is fetched at once.
  t.Tab(2);
  t.TypeOver("UserName", o.user);
  t.TypeOver("Password", o.password);
  t.TypeOver("IPAddress", "http://" + o.service + "/");
  t.Faults("*/Masterfile2.csv delay 1500 times 1\n");
  t.Click("SaveToINI");
  t.Shot("04-general-fetching-master-list");
  WaitUntil([&w] { return !w.running(); });
  t.Shot("05-general-saved");

  // List 1: daily, eSignal, a search without a match, then one with.
  t.Tab(3);
  t.Click("DownloadList1");
  t.Click("DailyInterval");
  t.Click("VendoreSignal");
  t.TypeOver("Text5", "Bond");
  QTest::keyClick(t.Find<QLineEdit>("Text5"), Qt::Key_Return);
  t.Shot("06-download-search-without-match");
  t.TypeOver("Text5", "Composite");
  QTest::keyClick(t.Find<QLineEdit>("Text5"), Qt::Key_Return);
  t.Click("SaveDownloadList");
  t.Shot("07-download-list-1");

  t.Faults("*/NYSEDaily-CompositeStats.csv delay 2500\n");
  t.Run([&] {
    Wait(1200);
    t.Shot("08-download-running");
  });
  t.Faults("");
  t.Shot("09-download-complete");
  ShowChart(t, w);

  t.Click("DownloadList7");
  t.Shot("10-download-all-periods-after-list-1");

  // A wrong password: the run must say plainly that it failed.
  t.Tab(2);
  t.TypeOver("Password", o.password + "-wrong");
  t.Click("SaveToINI");
  t.Tab(3);
  t.Click("DownloadList1");
  t.Run();
  t.Shot("11-download-failed-wrong-password");
  t.Tab(2);
  t.TypeOver("Password", o.password);
  t.Click("SaveToINI");

  // Stopped while the update file is on its way: the run says that it stopped, not that it
  // completed.
  t.Tab(3);
  t.Click("DownloadList1");
  t.Faults("*/Update-Daily.csv delay 2000\n");
  t.Run([&] {
    Wait(500);
    t.Click("StopRun");
  });
  t.Faults("");
  t.Shot("15-download-stopped");

  t.Tab(2);
  t.Click("ImplementSpecialFunctions");
  t.Tab(4);
  t.Shot("12-special-functions");
  t.FullPageShot("13-special-functions-whole-page", 4);

  for (const auto& [width, height] : {std::pair{800, 600}, std::pair{640, 480}}) {
    w.resize(width, height);
    for (int tab = 0; tab < 5; ++tab) {
      t.Tab(tab);
      t.Shot("20-" + std::to_string(width) + "x" + std::to_string(height) + "-" + page_names[tab]);
    }
  }
  if (o.service_pid > 0) {
    // The service is gone: the run cannot fetch anything. In a small window the page scrolls to
    // the result by itself.
    ::kill(o.service_pid, SIGTERM);
    Wait(500);
    w.resize(800, 600);
    t.Tab(3);
    t.Click("DownloadList1");
    t.Run();
    t.Shot("14-download-failed-service-stopped-800x600");
  }
  w.resize(1180, 800);
}

}  // namespace

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  Options options;
  if (!ParseOptions(QApplication::arguments(), options)) {
    std::fprintf(
        stderr,
        "usage: corvanet-screenshots --out DIR --base-dir DIR --service HOST:PORT --user U "
        "--password PW --faults FILE [--service-pid PID]\n");
    return 2;
  }
  int message = 0;
  // Message boxes are pictured, then answered as a user going ahead would.
  corvanet::gui::QtShell shell(corvanet::gui::DesktopActions{
      [&](const corvanet::gui::MessageRequest& request) {
        QMessageBox box(request.icon == corvanet::Icon::kExclamation ? QMessageBox::Warning
                        : request.icon == corvanet::Icon::kQuestion  ? QMessageBox::Question
                                                                     : QMessageBox::Information,
                        QString::fromStdString(request.title),
                        QString::fromStdString(request.text));
        box.show();
        QTest::qWait(100);
        box.grab().save(
            QString::fromStdString(options.out + "message-" + std::to_string(++message) + ".png"));
        return request.buttons == corvanet::Buttons::kOk ? corvanet::Answer::kOk
                                                         : corvanet::Answer::kYes;
      },
      [](const std::string&) { return true; },
      [](const std::string&, const std::string&) { return std::string(); },
      {}});
  corvanet::SystemHttpClient http;
  corvanet::SystemClock clock;
  corvanet::Session session(shell, http, clock);
  corvanet::StartupOptions startup;
  startup.base_directory = options.base;
  startup.start_directory = options.base;
  startup.change_directory = false;
  if (!corvanet::Form_Load(session, startup)) return 1;

  MainWindow window(session);
  window.show();
  TakeTheTour(options, window);
  return 0;
}
