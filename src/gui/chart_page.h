#pragma once
// The Chart page: the price of a datafile of the current list and up to three panes of indicators
// or statistic columns below it, on one date axis. The choices, the view's moves and the cross-hair
// reading are the core's (core/indicators/chart_model.h); this page reads the datafile, fills the
// panes and forwards the mouse.
#include <QPointer>
#include <array>
#include <optional>
#include <string>
#include <vector>

#include "core/indicators/chart_model.h"
#include "core/indicators/datafile_series.h"
#include "gui/page.h"

class QComboBox;
class QLabel;
class QPushButton;
class QTabWidget;

namespace corvanet::gui {

class ChartPane;

class ChartPage final : public Page {
  Q_OBJECT

 public:
  // The choice is remembered in ChartChoiceFile(program_directory).
  ChartPage(PageHost& host, std::string program_directory);

  // Offers the current list's datafiles, and redraws when a run has replaced the one shown.
  void Render(const WindowState& state) override;
  // Charts a symbol in the period chosen (a double click on a list item).
  void ShowSymbol(const std::string& symbol);
  void SetChoice(const ChartChoice& choice);
  const ChartChoice& choice() const { return choice_; }

  void ZoomAt(double anchor, double factor);
  void PanBy(double shift);
  void ShowWhole();
  void HoverAt(double time);
  // The panes as a picture; false when it could not be written.
  bool SavePng(const QString& path);

  // Pane 0 is the price, 1-3 the chosen series.
  ChartPane* pane(std::size_t i) const { return panes_[i]; }
  TimeWindow window() const { return window_; }
  const DatafileSeries& series() const { return series_; }
  QString readout() const;
  QString message() const;

 protected:
  void showEvent(QShowEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  void BuildControls();
  void ShowChoice();
  void OfferList(const ListBox& list);
  void Load();
  void DrawPrice();
  void DrawPane(std::size_t i);
  void SetWindow(TimeWindow window);
  void AlignPanes();
  void ChoiceChanged();

  std::string choice_file_;
  ChartChoice choice_;
  WindowState where_;  // the folders and vendor of the state rendered last, for the file names
  std::vector<std::string> offered_;  // the list items in the picker
  DatafileSeries series_;
  std::vector<double> times_;
  std::array<std::vector<double>, kChartPanes> values_;
  ShownFile shown_;
  bool stale_ = false;  // the file changed while the page was hidden
  TimeWindow whole_;
  TimeWindow window_;
  QComboBox* datafile_;
  QComboBox* period_;
  QComboBox* price_;
  std::array<QComboBox*, kChartPanes> pane_choices_{};
  QPushButton* whole_button_;
  QPushButton* save_;
  QLabel* readout_;
  QLabel* message_;
  QWidget* panes_box_;
  std::array<ChartPane*, kChartPanes + 1> panes_{};
};

// Adds the page as the last tab of `tabs`; a double click on an index of the master list opens
// its chart there.
ChartPage* AddChartPage(PageHost& host, QTabWidget& tabs, const std::string& program_directory);

}  // namespace corvanet::gui
