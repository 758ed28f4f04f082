#include "gui/chart_page.h"

#include <QComboBox>
#include <QFileDialog>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineSeries>
#include <QListWidget>
#include <QPixmap>
#include <QPushButton>
#include <QStandardPaths>
#include <QTabWidget>
#include <QTimer>
#include <QVBoxLayout>

#include "core/download/datafile_names.h"
#include "core/indicators/breadth_indicators.h"
#include "core/indicators/indicator_table.h"
#include "core/indicators/symbol_datafile.h"
#include "gui/chart_pane.h"

namespace corvanet::gui {

namespace {

constexpr double kPaneMargin = 4;

QString Text(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

QString CaptionOf(const std::string& series) {
  const IndicatorDef* def = FindIndicator(series);
  return def != nullptr ? Text(def->caption) : Text(series);
}

std::span<const double> PriceColumn(const DatafileSeries& series, std::string_view name) {
  return series.Column(FindColumn(name));
}

QComboBox* Choice(const char* name, const QString& tip) {
  auto* box = new QComboBox;
  box->setObjectName(name);
  box->setToolTip(tip);
  box->setSizeAdjustPolicy(QComboBox::AdjustToContents);
  return box;
}

}  // namespace

ChartPage::ChartPage(PageHost& host, std::string program_directory)
    : Page(host),
      choice_file_(ChartChoiceFile(program_directory)),
      choice_(ReadChartChoice(choice_file_)),
      stale_(true) {
  setObjectName("ChartPage");
  BuildControls();
  ShowChoice();
  // The page stays live during a run: it only reads, and a file the run replaces is redrawn.
  LockOnly({});
}

void ChartPage::BuildControls() {
  datafile_ = Choice("ChartDatafile", "A datafile of the download list shown on the download page");
  period_ = Choice("ChartPeriod", "The datafile's period");
  for (std::string_view name : kPeriodNames) period_->addItem(Text(name), Text(name));
  price_ = Choice("ChartPrice", "The composite's price as OHLC bars or as a line of closes");
  price_->addItem("Bars");
  price_->addItem("Line");
  whole_button_ = new QPushButton("Show All");
  whole_button_->setObjectName("ChartShowAll");
  whole_button_->setToolTip("The whole file; the mouse wheel zooms and a drag moves in time");
  save_ = new QPushButton("Save as PNG");
  save_->setObjectName("ChartSavePng");

  auto* top = new QHBoxLayout;
  top->addWidget(new QLabel("Datafile"));
  top->addWidget(datafile_, 1);
  top->addWidget(new QLabel("Period"));
  top->addWidget(period_);
  top->addWidget(new QLabel("Price"));
  top->addWidget(price_);
  top->addStretch();
  top->addWidget(whole_button_);
  top->addWidget(save_);

  auto* below = new QHBoxLayout;
  const std::vector<std::string> names = ChartSeriesNames();
  for (std::size_t i = 0; i < kChartPanes; ++i) {
    const std::string name = "ChartPane" + std::to_string(i + 1);
    QComboBox* box = Choice(name.c_str(),
                            "What the pane below the price shows: an indicator "
                            "(see the help page Indicators.htm) or a datafile column");
    box->addItem("(none)", QString());
    for (const std::string& series : names) box->addItem(CaptionOf(series), Text(series));
    pane_choices_[i] = box;
    below->addWidget(new QLabel(QString("Pane %1").arg(i + 1)));
    below->addWidget(box);
    connect(box, &QComboBox::activated, this, [this, i, box] {
      choice_.panes[i] = box->currentData().toString().toStdString();
      DrawPane(i);
      SetWindow(window_);
      ChoiceChanged();
    });
  }
  below->addStretch();

  readout_ = new QLabel;
  readout_->setObjectName("ChartReadout");
  readout_->setTextFormat(Qt::PlainText);
  readout_->setMinimumHeight(readout_->fontMetrics().height());
  message_ = new QLabel;
  message_->setObjectName("ChartMessage");
  message_->setTextFormat(Qt::PlainText);
  message_->setWordWrap(true);

  panes_box_ = new QWidget;
  panes_box_->setObjectName("ChartPanes");
  auto* stack = new QVBoxLayout(panes_box_);
  stack->setContentsMargins(0, 0, 0, 0);
  stack->setSpacing(0);
  for (std::size_t i = 0; i < panes_.size(); ++i) {
    auto* pane = new ChartPane(QString("ChartPaneView%1").arg(i));
    pane->setMinimumHeight(i == 0 ? 160 : 90);
    stack->addWidget(pane, i == 0 ? 3 : 2);
    panes_[i] = pane;
    connect(pane, &ChartPane::Zoomed, this, &ChartPage::ZoomAt);
    connect(pane, &ChartPane::Panned, this, &ChartPage::PanBy);
    connect(pane, &ChartPane::Hovered, this, &ChartPage::HoverAt);
    connect(pane, &ChartPane::Left, this, [this] {
      for (ChartPane* p : panes_) p->SetCrossHair(std::nullopt);
    });
  }

  auto* layout = new QVBoxLayout(content());
  layout->addLayout(top);
  layout->addLayout(below);
  layout->addWidget(message_);
  layout->addWidget(readout_);
  layout->addWidget(panes_box_, 1);

  connect(datafile_, &QComboBox::activated, this,
          [this] { ShowSymbol(datafile_->currentData().toString().toStdString()); });
  connect(period_, &QComboBox::activated, this, [this] {
    choice_.period = period_->currentData().toString().toStdString();
    ChoiceChanged();
    Load();
  });
  connect(price_, &QComboBox::activated, this, [this](int index) {
    choice_.price_as_line = index == 1;
    DrawPrice();
    SetWindow(window_);
    ChoiceChanged();
  });
  connect(whole_button_, &QPushButton::clicked, this, [this] { ShowWhole(); });
  connect(save_, &QPushButton::clicked, this, [this] {
    const QString suggested = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation) +
                              "/" + Text(choice_.symbol + "-" + choice_.period + ".png");
    const QString path =
        QFileDialog::getSaveFileName(this, "Save as PNG", suggested, "PNG pictures (*.png)");
    if (path.isEmpty()) return;
    message_->setText(SavePng(path) ? "Saved " + path : "Could not write " + path);
  });
}

void ChartPage::ShowChoice() {
  period_->setCurrentIndex(period_->findData(Text(choice_.period)));
  price_->setCurrentIndex(choice_.price_as_line ? 1 : 0);
  for (std::size_t i = 0; i < kChartPanes; ++i) {
    pane_choices_[i]->setCurrentIndex(
        std::max(0, pane_choices_[i]->findData(Text(choice_.panes[i]))));
  }
  const int item = datafile_->findData(Text(choice_.symbol));
  if (item < 0 && !choice_.symbol.empty()) {
    datafile_->insertItem(0, Text(choice_.symbol), Text(choice_.symbol));
    datafile_->setCurrentIndex(0);
  } else {
    datafile_->setCurrentIndex(item);
  }
}

void ChartPage::OfferList(const ListBox& list) {
  if (list.items == offered_) return;
  offered_ = list.items;
  datafile_->clear();
  for (const std::string& item : offered_) {
    datafile_->addItem(Text(item), Text(SymbolOfListItem(item)));
  }
  ShowChoice();
}

void ChartPage::Render(const WindowState& state) {
  const bool moved =
      state.PathToDataFiles != where_.PathToDataFiles || state.VendorOther != where_.VendorOther ||
      state.VendorReuters != where_.VendorReuters || state.VendorYahoo != where_.VendorYahoo;
  where_.PathToDataFiles = state.PathToDataFiles;
  where_.VendorOther = state.VendorOther;
  where_.VendorReuters = state.VendorReuters;
  where_.VendorYahoo = state.VendorYahoo;
  OfferList(state.List6);
  // A run replaces a datafile whole, so a change of its identity is a new file to draw; a symbol
  // without a datafile is looked for again, as a run may just have made it.
  const bool changed =
      moved ||
      (shown_.path.empty() ? !choice_.symbol.empty() &&
                                 !FindSymbolDatafile(where_, choice_.period, choice_.symbol).empty()
                           : shown_.Changed());
  if (!changed && !stale_) return;
  if (isVisible()) {
    Load();
  } else {
    stale_ = true;
  }
}

void ChartPage::showEvent(QShowEvent* event) {
  Page::showEvent(event);
  if (stale_) Load();
}

void ChartPage::ShowSymbol(const std::string& symbol) {
  choice_.symbol = symbol;
  ShowChoice();
  ChoiceChanged();
  shown_ = {};
  Load();
}

void ChartPage::SetChoice(const ChartChoice& choice) {
  choice_ = choice;
  ShowChoice();
  ChoiceChanged();
  shown_ = {};
  Load();
}

void ChartPage::ChoiceChanged() {
  if (!WriteChartChoice(choice_file_, choice_)) {
    message_->setText("The chart's choice could not be saved in " + Text(choice_file_));
  }
}

void ChartPage::Load() {
  stale_ = false;
  // A reload of the same file keeps the view unless it showed the whole file.
  const bool same_file = !shown_.path.empty();
  const bool was_whole = window_ == whole_;
  series_ = {};
  shown_ = {};
  const std::string path = choice_.symbol.empty()
                               ? std::string()
                               : FindSymbolDatafile(where_, choice_.period, choice_.symbol);
  if (choice_.symbol.empty()) {
    message_->setText(
        "Pick a datafile of the download list, or double-click an index on the "
        "download page's list of available indexes.");
  } else if (path.empty()) {
    message_->setText(Text("There is no " + choice_.period + " datafile of " + choice_.symbol +
                           " yet; a download run of a list that holds it makes one."));
  } else {
    shown_.path = path;
    shown_.identity = IdentityOf(path);
    DatafileError error;
    if (ReadDatafileSeries(path, NumericColumns(), series_, error)) {
      message_->setText(series_.size() == 0 ? Text(path + " holds no bars.") : QString());
    } else {
      message_->setText(Text(path + " cannot be read: " + error.Text()));
    }
  }
  times_ = BarTimes(series_.dates);
  whole_ = WholeWindow(times_);
  DrawPrice();
  for (std::size_t i = 0; i < kChartPanes; ++i) DrawPane(i);
  SetWindow(same_file && !was_whole ? PanWindow(window_, whole_, 0) : whole_);
  readout_->clear();
}

void ChartPage::DrawPrice() {
  const QString title =
      choice_.symbol.empty() ? QString() : Text(choice_.symbol + "  " + choice_.period);
  if (series_.size() == 0) {
    panes_[0]->Show(title, {}, {});
    return;
  }
  panes_[0]->ShowBars(times_, PriceColumn(series_, "OpenPx"), PriceColumn(series_, "HighPx"),
                      PriceColumn(series_, "LowPx"), PriceColumn(series_, "ClosePx"),
                      !choice_.price_as_line);
  panes_[0]->chart()->setTitle(title);
}

void ChartPage::DrawPane(std::size_t i) {
  ChartPane* pane = panes_[i + 1];
  const std::string& name = choice_.panes[i];
  values_[i] = name.empty() ? std::vector<double>() : SeriesValues(series_, name);
  pane->setVisible(!name.empty());
  pane->Show(name.empty() ? QString() : CaptionOf(name), times_, values_[i]);
  // Only the lowest pane shown carries the dates; the others line up above it.
  std::size_t lowest = 0;
  for (std::size_t k = 0; k < kChartPanes; ++k) {
    if (!choice_.panes[k].empty()) lowest = k + 1;
  }
  for (std::size_t k = 0; k < panes_.size(); ++k) panes_[k]->SetDateLabelsVisible(k == lowest);
}

void ChartPage::SetWindow(TimeWindow window) {
  window_ = window;
  for (ChartPane* pane : panes_) pane->SetWindow(window);
  AlignPanes();
}

void ChartPage::AlignPanes() {
  // The value labels of each pane take their own width; the widest sets where every plot begins.
  double left = 0;
  double right = 0;
  for (ChartPane* pane : panes_) {
    if (pane->isHidden()) continue;
    const auto [left_room, right_room] = pane->LabelRoom();
    left = std::max(left, left_room);
    right = std::max(right, right_room);
  }
  for (ChartPane* pane : panes_) {
    if (!pane->isHidden()) pane->SetPlotEdges(left + kPaneMargin, right + kPaneMargin);
  }
}

void ChartPage::resizeEvent(QResizeEvent* event) {
  Page::resizeEvent(event);
  // After the panes have been laid out at their new size.
  QTimer::singleShot(0, this, [this] { AlignPanes(); });
}

void ChartPage::ZoomAt(double anchor, double factor) {
  if (times_.empty()) return;
  SetWindow(ZoomWindow(window_, whole_, times_.size(), anchor, factor));
}

void ChartPage::PanBy(double shift) {
  if (times_.empty()) return;
  SetWindow(PanWindow(window_, whole_, shift));
}

void ChartPage::ShowWhole() {
  SetWindow(whole_);
}

void ChartPage::HoverAt(double time) {
  const std::optional<std::size_t> bar = NearestBar(times_, time);
  if (!bar) return;
  std::vector<NamedValue> values;
  const std::span<const double> close = PriceColumn(series_, "ClosePx");
  if (*bar < close.size()) values.push_back({"Close", close[*bar]});
  for (std::size_t i = 0; i < kChartPanes; ++i) {
    if (!choice_.panes[i].empty()) values.push_back({choice_.panes[i], values_[i][*bar]});
  }
  readout_->setText(Text(CrossHairText(series_.dates[*bar], values)));
  for (ChartPane* pane : panes_) pane->SetCrossHair(times_[*bar]);
}

bool ChartPage::SavePng(const QString& path) {
  return panes_box_->grab().save(path, "PNG");
}

ChartPage* AddChartPage(PageHost& host, QTabWidget& tabs, const std::string& program_directory) {
  auto* page = new ChartPage(host, program_directory);
  tabs.addTab(page, "C&hart");
  if (auto* master = tabs.findChild<QListWidget*>("List5")) {
    QObject::connect(master, &QListWidget::itemDoubleClicked, page,
                     [page, &tabs](QListWidgetItem* item) {
                       page->ShowSymbol(std::string(SymbolOfListItem(item->text().toStdString())));
                       tabs.setCurrentWidget(page);
                     });
  }
  return page;
}

QString ChartPage::readout() const {
  return readout_->text();
}

QString ChartPage::message() const {
  return message_->text();
}

}  // namespace corvanet::gui
