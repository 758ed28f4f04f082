// The single-statistic section: the 34 statistic boxes, the lists they are made for, and the
// file-name, structure, date and zero-value choices.
#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

#include "core/app/settings_buttons.h"
#include "core/stats/single_stat_files.h"
#include "core/stats/statistic_catalogue.h"
#include "gui/bindings.h"
#include "gui/page.h"
#include "gui/special_sections.h"

namespace corvanet::gui {

namespace {

// The 34 boxes grouped as a reader scans them: trends, breadth, volume, highs and lows, then the
// moving averages with one row per relation and one column per average.
constexpr std::array<std::array<std::string_view, 5>, 8> kStatisticRows{{
    {"UpTrends", "NewUpTrends", "DownTrends", "NewDownTrends", ""},
    {"Advances", "Declines", "Unchanged", "Traded", ""},
    {"UpVolume", "DownVolume", "TotalVolume", "", ""},
    {"NewHighs", "NewHighs1stDay", "NewLows", "NewLows1stDay", ""},
    {"QNewHighs", "QNewHighs1stDay", "QNewLows", "QNewLows1stDay", ""},
    {"Above200ma", "Above30ma", "Above18ma", "Above9ma", "Above4ma"},
    {"Below200ma", "Below30ma", "Below18ma", "Below9ma", "Below4ma"},
    {"Equal200ma", "Equal30ma", "Equal18ma", "Equal9ma", "Equal4ma"},
}};

QLayout* StatisticBoxes(Bindings& bind) {
  auto* layout = new QVBoxLayout;
  auto* grid = new QGridLayout;
  for (std::size_t row = 0; row < kStatisticRows.size(); ++row) {
    for (std::size_t column = 0; column < kStatisticRows[row].size(); ++column) {
      const std::string_view name = kStatisticRows[row][column];
      if (name.empty()) continue;
      Q_ASSERT(FindStatistic(name) != nullptr);
      grid->addWidget(
          bind.SettingCheck(name,
                            QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size()))),
          static_cast<int>(row), static_cast<int>(column));
    }
  }
  layout->addLayout(grid);
  auto* buttons = new QHBoxLayout;
  buttons->addWidget(bind.Button("SelectAllStatFiles", "Select All", &SelectAllStatFiles_Click));
  buttons->addWidget(bind.Button("ClearAllStatFiles", "Clear All", &ClearAllStatFiles_Click));
  buttons->addStretch();
  layout->addLayout(buttons);
  return layout;
}

QLayout* ListChoices(Bindings& bind) {
  struct ListRow {
    const char* box;
    const char* button;
    const char* caption;
  };
  static constexpr std::array<ListRow, 7> kRows{{
      {"RunWithList1", "MakeList1StatFiles", "List 1"},
      {"RunWithList2", "MakeList2StatFiles", "List 2"},
      {"RunWithList3", "MakeList3StatFiles", "List 3"},
      {"RunWithList4", "MakeList4StatFiles", "List 4"},
      {"RunWithList5", "MakeList5StatFiles", "List 5"},
      {"RunWithAllDaily", "MakeAllDailyStatFiles", "All Daily"},
      {"RunWithAllPeriods", "MakeAllPeriodsStatFiles", "All Periods"},
  }};
  auto* layout = new QVBoxLayout;
  layout->addWidget(
      Note("Your new single statistic .csv datafiles will be automatically generated when you "
           "download the below lists (check any or all)."));
  auto* boxes = new QHBoxLayout;
  auto* buttons = new QHBoxLayout;
  for (std::size_t i = 0; i < kRows.size(); ++i) {
    const int list = static_cast<int>(i) + 1;
    boxes->addWidget(bind.SettingCheck(kRows[i].box, kRows[i].caption));
    // Making the files walks a whole list, so it runs off the window's thread.
    buttons->addWidget(bind.WorkerButton(kRows[i].button, kRows[i].caption,
                                         [list](Session& s) { MakeListStatFiles_Click(s, list); }));
  }
  boxes->addStretch();
  layout->addLayout(boxes);
  layout->addWidget(Note("OR click on a list name to generate the new files for that list now."));
  layout->addLayout(buttons);
  return layout;
}

}  // namespace

QGroupBox* MakeStatisticSection(Bindings& bind) {
  auto* layout = new QVBoxLayout;
  layout->addLayout(StatisticBoxes(bind));
  layout->addWidget(bind.SettingCheck("AutoCreateOneStatFiles",
                                      "Automatically generate these files on each download."));
  layout->addWidget(Group("FrameStatLists", "Select Download Lists", ListChoices(bind)));

  auto* choices = new QHBoxLayout;
  auto* structure = new QVBoxLayout;
  structure->addWidget(
      Note("Select the datafile structure to be used for the files created in this section."));
  structure->addWidget(
      bind.SettingOption("PeriodStatFilename", "Data Period / Statistic / Filename"));
  structure->addWidget(
      bind.SettingOption("StatPeriodFileName", "Statistic / Data Period / Filename"));
  choices->addWidget(Group("FrameStructure", "Datafile Structure", structure), 2);

  auto* names = new QVBoxLayout;
  names->addWidget(bind.SettingCombo("MaxFilenameLength", &WindowState::MaxFilenameLengthItems));
  names->addWidget(Note("For no limit, leave this field blank."));
  choices->addWidget(Group("FrameFileNames", "File Names Setting", names), 2);

  auto* dates = new QVBoxLayout;
  dates->addWidget(bind.SettingOption("DateFormatMMDDYYYY", "MM/DD/YYYY"));
  dates->addWidget(bind.SettingOption("DateFormatYYYYMMDD", "YYYYMMDD"));
  choices->addWidget(Group("FrameDateFormat", "Date Format", dates), 1);

  auto* zeros = new QVBoxLayout;
  zeros->addWidget(new QLabel("Replace 0 with"));
  zeros->addWidget(bind.SettingCombo("ReplaceZeroValues", &WindowState::ReplaceZeroValuesItems));
  choices->addWidget(Group("FrameZeroValues", "Replace Zero Values", zeros), 1);
  layout->addLayout(choices);

  return Group("Frame17", "Create One .csv Format Datafile For Each Statistic", layout);
}

}  // namespace corvanet::gui
