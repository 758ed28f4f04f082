// "Download File Settings": the download lists, periods and vendor, the two list boxes, the list
// actions, the download button with its progress, and the result of the last download.
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

#include "core/app/first_masterfile.h"
#include "core/app/run_outcome.h"
#include "core/app/settings.h"
#include "core/app/settings_buttons.h"
#include "core/lists/download_lists.h"
#include "core/lists/list_editing.h"
#include "gui/list_boxes.h"
#include "gui/page.h"
#include "gui/run_outcome_view.h"

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

QLabel* Note(const QString& text, const char* name) {
  auto* label = new QLabel(text);
  label->setObjectName(name);
  label->setWordWrap(true);
  label->setTextFormat(Qt::PlainText);
  return label;
}

class DownloadPage final : public Page {
 public:
  explicit DownloadPage(PageHost& host) : Page(host) {
    auto* layout = new QVBoxLayout(content());
    QWidget* choices = MakeListChoices();
    layout->addWidget(choices);
    QWidget* lists = MakeListArea();
    layout->addWidget(lists, 3);

    // The run's captions are long ("Daily Data - Now Updating Datafile 2 of 45 Total Datafiles On
    // List 'All Periods'"), so the download button has a row of its own; the progress and the
    // result share the row below it.
    auto* start_row = new QWidget;
    auto* bottom = new QHBoxLayout(start_row);
    bottom->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(start_row);
    auto* start = bind_.Frame("Frame2", &WindowState::Frame2);
    auto* start_layout = new QVBoxLayout(start);
    auto* download = bind_.RunButton("DownLoadButton", &WindowState::DownLoadButton,
                                     [](Session& s) { DownloadAndShowOutcome(s); });
    download->setMinimumHeight(40);
    // Locked during the run, its caption is still the run's progress: keep it readable.
    download->setStyleSheet("QPushButton:disabled { color: palette(window-text); }");
    start_layout->addWidget(download);
    start_layout->addWidget(
        bind_.PlainCheck("ForceFullDownload", &WindowState::ForceFullDownload,
                         "Force a full download of all datafiles on the next download."));
    bottom->addWidget(start, 1);

    auto* button_column = new QVBoxLayout;
    button_column->addWidget(
        bind_.SaveButton("SaveSettings2", "Save Settings", &SaveSettings2_Click));
    auto* exit = new QPushButton("Exit");
    exit->setObjectName("Exit3");
    connect(exit, &QPushButton::clicked, this, [this] { host_.ExitClicked(3); });
    button_column->addWidget(exit);
    button_column->addWidget(InertExitButton("Delete1"));
    button_column->addStretch();
    bottom->addLayout(button_column);

    auto* results = new QHBoxLayout;
    // A large window gives the result nearly as much room as the lists: a failed run's lines are
    // what the user reads then.
    layout->addLayout(results, 2);
    auto* progress_frame =
        bind_.Frame("DownloadProgressFrame", &WindowState::DownloadProgressFrame);
    auto* progress_layout = new QVBoxLayout(progress_frame);
    progress_ = new QProgressBar;
    progress_->setObjectName("ProgressBar1");
    // Hidden between runs, it keeps its place so the label does not jump when a run starts.
    QSizePolicy keep = progress_->sizePolicy();
    keep.setRetainSizeWhenHidden(true);
    progress_->setSizePolicy(keep);
    progress_layout->addWidget(progress_);
    progress_layout->addWidget(bind_.Label("Label13", &WindowState::Label13));
    progress_layout->addStretch();
    results->addWidget(progress_frame, 2);
    outcome_ = new RunOutcomeView;
    results->addWidget(outcome_, 3);
    // The progress and the result stay readable while the run goes on. Only plain containers are
    // locked: a bound frame is enabled again by the next render.
    LockOnly({choices, lists, start_row});
  }

  void Render(const WindowState& state) override {
    bind_.Render(state);
    ShowListBox(master_, state.List5);
    ShowListBox(download_, state.List6);
    const QString hint = QString::fromStdString(EmptyMasterListHint(state));
    if (master_hint_->text() != hint) master_hint_->setText(hint);
    master_hint_->setVisible(!hint.isEmpty());
    const QString found = QString::fromStdString(state.SearchResult);
    if (search_result_->text() != found) search_result_->setText(found);
    const ProgressBar& bar = state.ProgressBar1;
    if (progress_->minimum() != bar.minimum || progress_->maximum() != bar.maximum) {
      progress_->setRange(bar.minimum, std::max(bar.minimum, bar.maximum));
    }
    progress_->setValue(std::clamp(bar.value, progress_->minimum(), progress_->maximum()));
    progress_->setVisible(bar.visible);
    outcome_->Render(state);
    if (state.RunSummaryLines != shown_summary_) {
      shown_summary_ = state.RunSummaryLines;
      // In a window too small for the whole page the result may lie below its edge.
      if (!shown_summary_.empty()) ShowWhole(outcome_);
    }
  }

 private:
  QWidget* MakeListChoices() {
    auto* row = new QWidget;
    auto* top = new QHBoxLayout(row);
    top->setContentsMargins(0, 0, 0, 0);

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
    return row;
  }

  QWidget* MakeListArea() {
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
    master_hint_ = Note(QString(), "MasterListHint");
    master_hint_->setStyleSheet("color: #0d47a1;");
    master_column->addWidget(master_hint_);
    master_column->addWidget(master_, 1);

    auto* middle = new QVBoxLayout;
    // A frame's title cannot wrap, and this one alone would make the page wider than a small
    // window; it stands above the frame as a label that wraps.
    middle->addWidget(
        Note("Instructions For Moving Indexes and ETFs To a Download List", "Frame9Title"));
    auto* search = new QGroupBox;
    search->setObjectName("Frame9");
    auto* search_layout = new QVBoxLayout(search);
    search_layout->addWidget(
        Note("Drag issues from the left list to the right one (hold Ctrl to pick several), or type "
             "part of a name or symbol and click select. Double click or press Delete to remove.",
             "SearchHelp"));
    auto* search_row = new QHBoxLayout;
    QLineEdit* search_text = bind_.PlainText("Text5", &WindowState::Text5);
    // Enter in the field means what the button beside it does.
    connect(search_text, &QLineEdit::returnPressed, this,
            [this] { host_.Handle(&AddByString_Click); });
    search_row->addWidget(search_text);
    search_row->addWidget(bind_.Button("AddByString", "select", &AddByString_Click));
    search_layout->addLayout(search_row);
    search_result_ = Note(QString(), "SearchResult");
    // Its place is kept when it is empty: a result coming and going must not shift the page.
    search_result_->setMinimumHeight(2 * search_result_->fontMetrics().lineSpacing());
    search_result_->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    search_layout->addWidget(search_result_);
    middle->addWidget(search);

    auto* actions = new QGroupBox("List Actions");
    actions->setObjectName("Frame26");
    auto* action_layout = new QVBoxLayout(actions);
    // Tight, so the page fits an 800 by 600 window without scrolling.
    action_layout->setSpacing(4);
    action_layout->addWidget(bind_.SaveButton("SaveDownloadList", &WindowState::SaveDownloadList,
                                              &SaveDownloadList_Click));
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

    // Narrower, the instructions wrap into a column taller than a small window.
    auto* middle_column = new QWidget;
    middle_column->setLayout(middle);
    middle->setContentsMargins(0, 0, 0, 0);
    middle_column->setMinimumWidth(250);

    auto* area = new QWidget;
    auto* columns = new QHBoxLayout(area);
    columns->setContentsMargins(0, 0, 0, 0);
    columns->addLayout(master_column, 3);
    columns->addWidget(middle_column, 2);
    columns->addLayout(download_column, 3);
    return area;
  }

  QPushButton* ListButton(int n, const QString& caption) {
    const QByteArray name = QString("DownloadList%1").arg(n).toLatin1();
    QPushButton* button =
        bind_.Button(name.constData(), caption, [n](Session& s) { DownloadList_Click(s, n); });
    // The list in hand stays marked: its button shows pressed and bold.
    button->setCheckable(true);
    bind_.OnRender([button, n](const WindowState& state) {
      const bool marked = state.SelectedList == n;
      if (button->isChecked() != marked) button->setChecked(marked);
      if (button->font().bold() != marked) {
        QFont font = button->font();
        font.setBold(marked);
        button->setFont(font);
      }
    });
    // "List 1" needs far less than a push button's usual width; the row must fit a small window.
    if (n <= 5) {
      QFont marked = button->font();
      marked.setBold(true);  // the caption of the list in hand
      button->setMinimumWidth(QFontMetrics(marked).horizontalAdvance(caption) + 16);
      button->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    }
    return button;
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
  QLabel* master_hint_ = nullptr;
  QLabel* search_result_ = nullptr;
  QProgressBar* progress_ = nullptr;
  RunOutcomeView* outcome_ = nullptr;
  std::vector<std::string> shown_summary_;
};

}  // namespace

Page* MakeDownloadPage(PageHost& host) {
  return new DownloadPage(host);
}

}  // namespace corvanet::gui
