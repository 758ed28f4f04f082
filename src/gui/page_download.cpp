// "Download File Settings": the download lists, periods and vendor, the two list boxes, the list
// actions and the download button with its progress.
#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

#include "core/app/settings.h"
#include "core/download/download_run.h"
#include "core/lists/download_lists.h"
#include "core/lists/list_editing.h"
#include "gui/list_boxes.h"
#include "gui/page.h"

namespace corvanet::gui {

namespace {

// The four vendor options are not settings: the list file names the vendor. Choosing one clears
// the others here, since no settings-table pairing covers four buttons.
constexpr std::array<bool WindowState::*, 4> kVendors{
    &WindowState::VendoreSignal, &WindowState::VendorYahoo, &WindowState::VendorReuters,
    &WindowState::VendorOther};

void ChooseVendor(Session& session, bool WindowState::*chosen) {
  for (bool WindowState::*vendor : kVendors) session.ui.*vendor = vendor == chosen;
}

class DownloadPage final : public Page {
 public:
  explicit DownloadPage(PageHost& host) : Page(host) {
    auto* layout = new QVBoxLayout(this);
    auto* top = new QHBoxLayout;
    layout->addLayout(top);

    auto* lists = bind_.Frame("ButtonBarFrame", &WindowState::ButtonBarFrame);
    auto* list_buttons = new QGridLayout(lists);
    for (int n = 1; n <= 5; ++n) {
      list_buttons->addWidget(ListButton(n, QString("List %1").arg(n)), (n - 1) / 3, (n - 1) % 3);
    }
    top->addWidget(lists);

    auto* full = new QGroupBox("Full List Downloads");
    full->setObjectName("Frame3");
    auto* full_grid = new QGridLayout(full);
    full_grid->addWidget(ListButton(6, "All Daily"), 0, 0);
    full_grid->addWidget(bind_.SettingCheck("AllDailyForceFull", "Force Full"), 0, 1);
    full_grid->addWidget(ListButton(7, "All Periods"), 1, 0);
    full_grid->addWidget(bind_.SettingCheck("AllPeriodsForceFull", "Force Full"), 1, 1);
    top->addWidget(full);

    auto* periods = new QGroupBox("Data Period(s)");
    periods->setObjectName("Frame1");
    auto* period_grid = new QGridLayout(periods);
    period_grid->addWidget(PeriodBox("DailyInterval", &WindowState::DailyInterval, "Daily"), 0, 0);
    period_grid->addWidget(PeriodBox("WeeklyInterval", &WindowState::WeeklyInterval, "Weekly"), 0,
                           1);
    period_grid->addWidget(PeriodBox("MonthlyInterval", &WindowState::MonthlyInterval, "Monthly"),
                           1, 0);
    period_grid->addWidget(
        PeriodBox("QuarterlyInterval", &WindowState::QuarterlyInterval, "Quarterly"), 1, 1);
    top->addWidget(periods);

    auto* vendors = new QGroupBox("Data Vendor");
    vendors->setObjectName("Frame6");
    auto* vendor_grid = new QGridLayout(vendors);
    const std::array<const char*, 4> vendor_names{"VendoreSignal", "VendorYahoo", "VendorReuters",
                                                  "VendorOther"};
    const std::array<const char*, 4> vendor_captions{"eSignal", "Yahoo", "Reuters", "Other"};
    for (std::size_t i = 0; i < kVendors.size(); ++i) {
      vendor_grid->addWidget(VendorOption(vendor_names[i], kVendors[i], vendor_captions[i]),
                             static_cast<int>(i / 2), static_cast<int>(i % 2));
    }
    top->addWidget(vendors);

    layout->addLayout(MakeListArea(), 1);

    auto* bottom = new QHBoxLayout;
    layout->addLayout(bottom);
    auto* start = bind_.Frame("Frame2", &WindowState::Frame2);
    auto* start_layout = new QVBoxLayout(start);
    auto* download = bind_.WorkerButton("DownLoadButton", &WindowState::DownLoadButton,
                                        [](Session& s) { DownLoadButton_Click(s); });
    download->setMinimumHeight(40);
    start_layout->addWidget(download);
    start_layout->addWidget(
        bind_.PlainCheck("ForceFullDownload", &WindowState::ForceFullDownload,
                         "Force a full download of all datafiles on the next download."));
    bottom->addWidget(start, 3);

    auto* progress_frame =
        bind_.Frame("DownloadProgressFrame", &WindowState::DownloadProgressFrame);
    auto* progress_layout = new QVBoxLayout(progress_frame);
    progress_ = new QProgressBar;
    progress_->setObjectName("ProgressBar1");
    progress_layout->addWidget(progress_);
    progress_layout->addWidget(bind_.Label("Label13", &WindowState::Label13));
    QLabel* problems = bind_.Label("RunProblems", &WindowState::RunProblems);
    problems->setWordWrap(true);
    problems->setStyleSheet("color: #b00020;");
    progress_layout->addWidget(problems);
    bottom->addWidget(progress_frame, 2);

    auto* buttons = new QVBoxLayout;
    buttons->addWidget(bind_.Button("SaveSettings2", "Save Settings", &SaveSettings2_Click));
    auto* exit = new QPushButton("Exit");
    exit->setObjectName("Exit3");
    connect(exit, &QPushButton::clicked, this, [this] { host_.ExitClicked(3); });
    buttons->addWidget(exit);
    buttons->addStretch();
    bottom->addLayout(buttons);
  }

  void Render(const WindowState& state) override {
    bind_.Render(state);
    ShowListBox(master_, state.List5);
    ShowListBox(download_, state.List6);
    const ProgressBar& bar = state.ProgressBar1;
    if (progress_->minimum() != bar.minimum || progress_->maximum() != bar.maximum) {
      progress_->setRange(bar.minimum, std::max(bar.minimum, bar.maximum));
    }
    progress_->setValue(std::clamp(bar.value, progress_->minimum(), progress_->maximum()));
    progress_->setVisible(bar.visible);
  }

 private:
  QLayout* MakeListArea() {
    master_ = new MasterListBox([this]() -> std::string {
      Session* session = host_.IdleSession();
      return session != nullptr ? List5_OLEStartDrag(*session) : std::string();
    });
    master_->setObjectName("List5");
    master_->setToolTip(
        "Click and drag a single item from this column, to your download list in the right "
        "column. or multiselect from the left column and drag all into the right column.");
    connect(master_, &QListWidget::itemSelectionChanged, this, [this] {
      if (Session* session = host_.IdleSession()) ReadSelection(master_, session->ui.List5);
    });

    DownloadListBox::Events events;
    events.dropped = [this](const std::string& text) {
      host_.Handle([&text](Session& s) { List6_OLEDragDrop(s, text); });
    };
    events.double_clicked = [this] { host_.Handle(&List6_DblClick); };
    events.key_released = [this](int code) {
      host_.Handle([code](Session& s) { List6_KeyUp(s, code); });
    };
    download_ = new DownloadListBox(std::move(events));
    download_->setObjectName("List6");
    download_->setToolTip(
        "This column contains your download list.  Double clicking an item in this list will "
        "remove it.");
    connect(download_, &QListWidget::itemSelectionChanged, this, [this] {
      if (Session* session = host_.IdleSession()) ReadSelection(download_, session->ui.List6);
    });

    auto* master_column = new QVBoxLayout;
    master_column->addWidget(new QLabel("Available Indexes and ETFs"));
    master_column->addWidget(master_, 1);

    auto* middle = new QVBoxLayout;
    auto* search = new QGroupBox("Instructions For Moving Indexes and ETFs To a Download List");
    search->setObjectName("Frame9");
    auto* search_layout = new QVBoxLayout(search);
    auto* how = new QLabel(
        "Drag issues from the left list to the right one (hold Ctrl to pick several), or type "
        "part of a name or symbol and click select. Double click or press Delete to remove.");
    how->setWordWrap(true);
    search_layout->addWidget(how);
    auto* search_row = new QHBoxLayout;
    search_row->addWidget(bind_.PlainText("Text5", &WindowState::Text5));
    search_row->addWidget(bind_.Button("AddByString", "select", &AddByString_Click));
    search_layout->addLayout(search_row);
    middle->addWidget(search);

    auto* actions = new QGroupBox("List Actions");
    actions->setObjectName("Frame26");
    auto* action_layout = new QVBoxLayout(actions);
    action_layout->addWidget(
        bind_.Button("SaveDownloadList", &WindowState::SaveDownloadList, &SaveDownloadList_Click));
    action_layout->addWidget(bind_.Button("MoveAllToDownloadList",
                                          &WindowState::MoveAllToDownloadList,
                                          &MoveAllToDownloadList_Click));
    action_layout->addWidget(
        bind_.Button("LoadDownloadFile", &WindowState::LoadDownloadFile, &LoadDownloadFile_Click));
    action_layout->addWidget(bind_.Button("ClearList", &WindowState::ClearList, &ClearList_Click));
    middle->addWidget(actions);
    middle->addStretch();

    auto* download_column = new QVBoxLayout;
    download_column->addWidget(new QLabel("Index and ETF Datafiles To Be Downloaded"));
    download_column->addWidget(download_, 1);

    auto* area = new QHBoxLayout;
    area->addLayout(master_column, 3);
    area->addLayout(middle, 2);
    area->addLayout(download_column, 3);
    return area;
  }

  QPushButton* ListButton(int n, const QString& caption) {
    const QByteArray name = QString("DownloadList%1").arg(n).toLatin1();
    return bind_.Button(name.constData(), caption, [n](Session& s) { DownloadList_Click(s, n); });
  }

  QCheckBox* PeriodBox(const char* name, int WindowState::*field, const QString& caption) {
    QCheckBox* box = bind_.PlainCheck(name, field, caption);
    // A full list fixes its own periods.
    bind_.OnRender([box](const WindowState& state) { box->setEnabled(state.PeriodBoxesEnabled); });
    return box;
  }

  QRadioButton* VendorOption(const char* name, bool WindowState::*field, const QString& caption) {
    auto* option = new QRadioButton(caption);
    option->setObjectName(name);
    option->setAutoExclusive(false);
    connect(option, &QRadioButton::clicked, this,
            [this, field](bool) { host_.Handle([field](Session& s) { ChooseVendor(s, field); }); });
    bind_.OnRender(
        [option, field](const WindowState& state) { ShowChecked(option, state.*field); });
    return option;
  }

  MasterListBox* master_ = nullptr;
  DownloadListBox* download_ = nullptr;
  QProgressBar* progress_ = nullptr;
};

}  // namespace

Page* MakeDownloadPage(PageHost& host) {
  return new DownloadPage(host);
}

}  // namespace corvanet::gui
