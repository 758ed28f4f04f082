// "Special Functions": price files with their MetaStock conversion, and single-statistic files.
#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "core/app/settings.h"
#include "core/ui/outside_programs.h"
#include "gui/folder_browse.h"
#include "gui/page.h"
#include "gui/special_sections.h"

namespace corvanet::gui {

namespace {

// The 18 column drop-downs, by file (rows) and column (columns). The second column of file 3 is
// not a setting, so it is bound as a plain field.
struct ColumnChoice {
  const char* name;
  std::string WindowState::*field;
};
using W = WindowState;
constexpr std::array<std::array<ColumnChoice, 6>, 3> kColumnChoices{{
    {{{"Stat1File1", &W::Stat1File1},
      {"Stat2File1", &W::Stat2File1},
      {"Stat3File1", &W::Stat3File1},
      {"Stat4File1", &W::Stat4File1},
      {"Stat5File1", &W::Stat5File1},
      {"Stat6File1", &W::Stat6File1}}},
    {{{"Stat1File2", &W::Stat1File2},
      {"Stat2File2", &W::Stat2File2},
      {"Stat3File2", &W::Stat3File2},
      {"Stat4File2", &W::Stat4File2},
      {"Stat5File2", &W::Stat5File2},
      {"Stat6File2", &W::Stat6File2}}},
    {{{"Stat1File3", &W::Stat1File3},
      {"Stat2File3", &W::Stat2File3},
      {"Stat3File3", &W::Stat3File3},
      {"Stat4File3", &W::Stat4File3},
      {"Stat5File3", &W::Stat5File3},
      {"Stat6File3", &W::Stat6File3}}},
}};

constexpr const char* kExplanation =
    "This section allows creation of up to five 10 column .csv files, six of which are fully "
    "configurable.  Once set up these files will be automatically created on each new download.  "
    "Additionally, MetaStock format price files will be automatically created from these files.  "
    "If unneeded, MetaStock file creation may be turned off below.  To create these files, make "
    "sure to place a check mark in the top check mark box and then select and configure one or all "
    "of the five available files.  Your configuration may be changed at any time.  Make sure to "
    "save your changes.";

QComboBox* ColumnCombo(Bindings& bind, const ColumnChoice& choice) {
  if (FindSetting(choice.name) != nullptr) {
    return bind.SettingCombo(choice.name, &W::StatisticColumnItems);
  }
  return bind.PlainCombo(choice.name, choice.field, &W::StatisticColumnItems);
}

QLayout* UserDefinedFiles(Bindings& bind) {
  auto* grid = new QGridLayout;
  for (int column = 0; column < 6; ++column) {
    grid->addWidget(new QLabel(QString("Column %1").arg(column + 1)), 0, column + 1);
  }
  const std::array<const char*, 3> boxes{"UserDefFile1", "UserDefFile2", "UserDefFile3"};
  for (int file = 0; file < 3; ++file) {
    grid->addWidget(bind.SettingCheck(boxes[static_cast<std::size_t>(file)],
                                      QString("User Defined File %1").arg(file + 1)),
                    file + 1, 0);
    for (int column = 0; column < 6; ++column) {
      auto* combo = ColumnCombo(
          bind, kColumnChoices[static_cast<std::size_t>(file)][static_cast<std::size_t>(column)]);
      combo->setMinimumContentsLength(10);
      grid->addWidget(combo, file + 1, column + 1);
    }
  }
  return grid;
}

// Beside the MetaStock settings: the converter's log, MetaStock itself and the sample datafiles.
QLayout* OutsidePrograms(Bindings& bind) {
  auto* row = new QHBoxLayout;
  row->addWidget(bind.Button("Help", "MetaStock Converter Log", &Help_Click));
  row->addWidget(bind.Button("OpenMetaStock", "Open MetaStock", &OpenMetaStock_Click));
  row->addWidget(
      bind.Button("OpenSampleDirectory", "Open a Sample Datafile", &OpenSampleDirectory_Click));
  row->addStretch();
  return row;
}

}  // namespace

QGroupBox* MakePriceFileSection(Bindings& bind) {
  auto* layout = new QVBoxLayout;
  auto* explanation = new QLabel(kExplanation);
  explanation->setWordWrap(true);
  layout->addWidget(explanation);
  layout->addWidget(bind.SettingCheck(
      "MakeMetaStockPxFiles",
      "Automatically create price files as configured below on each download.  Files will also "
      "contain a symbol, issue name, date value and data period value."));
  layout->addWidget(bind.SettingCheck("OHLCVV",
                                      "Open, High, Low, Close, Total Constituent Volume, Trade "
                                      "Volume (traditional price file)"));
  layout->addWidget(bind.SettingCheck(
      "EqWtOHLCVV", "Equal Weight Open, High, Low, Close, Total Constituent Volume, Trade Volume"));
  layout->addLayout(UserDefinedFiles(bind));
  layout->addWidget(bind.SettingCheck("DoNotMakeMetaStockFormat",
                                      "Just make the .csv format datafiles and do NOT generate "
                                      "MetaStock format  price files"));

  auto* folder = new QGridLayout;
  QLabel* label = bind.Label("Label25", &W::Label25);
  folder->addWidget(label, 0, 0, 1, 2);
  QLineEdit* path = bind.SettingText("PathToMSPxFiles");
  folder->addWidget(path, 1, 0);
  auto* browse = bind.Button("BrowseToMSPxFilePath", &W::BrowseToMSPxFilePath, {});
  QObject::connect(browse, &QPushButton::clicked, browse, [&bind, browse] {
    QWidget* parent = browse->window();
    bind.host().Handle(
        [parent](Session& s) { BrowseToDirectory(s, FolderKind::kMSPxFiles, parent); });
  });
  folder->addWidget(browse, 1, 1);
  layout->addLayout(folder);
  layout->addLayout(OutsidePrograms(bind));
  // Ticking special functions marks the folder as the thing to set up next.
  bind.OnRender([label, path](const WindowState& state) {
    label->setForegroundRole(state.Label25ButtonTextColour ? QPalette::ButtonText
                                                           : QPalette::WindowText);
    QFont font = path->font();
    font.setBold(state.PathToMSPxFilesEmphasised);
    path->setFont(font);
    path->setStyleSheet(state.PathToMSPxFilesEmphasised ? "color: blue;" : "");
  });

  auto* frame =
      new QGroupBox("Create .csv Format Price Files and/or Generate MetaStock Format Price Files");
  frame->setObjectName("Frame14");
  frame->setLayout(layout);
  return frame;
}

namespace {

class SpecialPage final : public Page {
 public:
  explicit SpecialPage(PageHost& host) : Page(host) {
    auto* sections = new QVBoxLayout(content());
    sections->addWidget(MakePriceFileSection(bind_));
    sections->addWidget(MakeStatisticSection(bind_));
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(bind_.SaveButton("SaveSettings", "Save Settings", &SaveSettings_Click));
    auto* exit = new QPushButton("Exit");
    exit->setObjectName("Exit4");
    connect(exit, &QPushButton::clicked, this, [this] { host_.ExitClicked(4); });
    buttons->addWidget(exit);
    sections->addLayout(buttons);
  }

  void Render(const WindowState& state) override { bind_.Render(state); }
};

}  // namespace

Page* MakeSpecialPage(PageHost& host) {
  return new SpecialPage(host);
}

}  // namespace corvanet::gui
