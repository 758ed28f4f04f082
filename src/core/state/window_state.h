#pragma once
// The main window as plain data: every control's value and caption. Handlers in the subsystems act
// on it; the Qt window and the command line only render it and forward events. Field names are the
// controls' names, which are also the settings keys.
#include <array>
#include <string>
#include <vector>

namespace corvanet {

// A list box: its items and which of them are selected.
struct ListBox {
  std::vector<std::string> items;
  std::vector<bool> selected;

  void Clear() {
    items.clear();
    selected.clear();
  }
  void Add(std::string item) {
    items.push_back(std::move(item));
    selected.push_back(false);
  }
  void RemoveAt(std::size_t index) {
    items.erase(items.begin() + static_cast<std::ptrdiff_t>(index));
    selected.erase(selected.begin() + static_cast<std::ptrdiff_t>(index));
  }
  std::size_t size() const { return items.size(); }
  // Position of the item equal to `text` ignoring letter case, or -1.
  int FindExactIgnoreCase(std::string_view text) const;
};

// What a front end shows of a button, label or frame besides its value.
struct ControlView {
  std::string caption;
  bool visible = true;
  bool enabled = true;
  bool bold = false;
  int width = 0;   // twips; 0 = as laid out
  int height = 0;  // twips; 0 = as laid out
};

struct ProgressBar {
  int minimum = 0;
  int maximum = 100;
  int value = 0;
  bool visible = false;
};

inline constexpr int kTabCount = 5;
inline constexpr int kSpecialFunctionsTab = 4;
inline constexpr int kDownloadTab = 3;
inline constexpr int kStatisticCount = 34;

struct WindowState {
  // --- Settings page ("General Settings") ---
  int DataSetPlus = 0;
  int DataSetAllUS = 0;
  std::string PathToDataFiles;
  std::string PathToLists;
  int ImplementSpecialFunctions = 0;
  std::string PathToMSPxFiles;
  std::string UserName = "Enter username here";
  std::string Password = "Enter password here";
  std::string RetryNumber = "3";
  bool DownloadCompleteMessageYes = true;
  bool DownloadCompleteMessageNo = false;
  bool SystemMessagesYes = true;
  bool SystemMessagesNo = false;
  std::string IPAddress;
  // A PEM file of an authority trusted besides the system's, for a service with its own.
  std::string CAFile;
  std::string MaxDownloadMB = "64";  // the largest body a fetch keeps, in MiB
  int GenerateLogFile = 0;  // never saved: chosen anew on each start

  // --- Statistic boxes, in catalogue order ---
  int UpTrends = 0, NewUpTrends = 0, DownTrends = 0, NewDownTrends = 0;
  int Advances = 0, Declines = 0, Unchanged = 0, Traded = 0;
  int UpVolume = 0, DownVolume = 0, TotalVolume = 0;
  int NewHighs = 0, NewHighs1stDay = 0, NewLows = 0, NewLows1stDay = 0;
  int QNewHighs = 0, QNewHighs1stDay = 0, QNewLows = 0, QNewLows1stDay = 0;
  int Above200ma = 0, Below200ma = 0, Equal200ma = 0;
  int Above30ma = 0, Below30ma = 0, Equal30ma = 0;
  int Above18ma = 0, Below18ma = 0, Equal18ma = 0;
  int Above9ma = 0, Below9ma = 0, Equal9ma = 0;
  int Above4ma = 0, Below4ma = 0, Equal4ma = 0;

  // --- Single-statistic page ---
  int RunWithList1 = 0, RunWithList2 = 0, RunWithList3 = 0, RunWithList4 = 0, RunWithList5 = 0;
  int RunWithAllDaily = 0, RunWithAllPeriods = 0;
  bool StatPeriodFileName = true;
  bool PeriodStatFilename = false;
  std::string MaxFilenameLength = "Select One";
  bool DateFormatYYYYMMDD = true;
  bool DateFormatMMDDYYYY = false;
  std::string ReplaceZeroValues = "0";
  int AutoCreateOneStatFiles = 0;
  std::vector<std::string> MaxFilenameLengthItems;
  std::vector<std::string> ReplaceZeroValuesItems;

  // --- Price-file page ---
  int MakeMetaStockPxFiles = 0;
  int OHLCVV = 0, EqWtOHLCVV = 0;
  int UserDefFile1 = 0, UserDefFile2 = 0, UserDefFile3 = 0;
  int DoNotMakeMetaStockFormat = 0;
  std::string Stat1File1 = "Select One", Stat2File1 = "Select One", Stat3File1 = "Select One",
              Stat4File1 = "Select One", Stat5File1 = "Select One", Stat6File1 = "Select One";
  std::string Stat1File2 = "Select One", Stat2File2 = "Select One", Stat3File2 = "Select One",
              Stat4File2 = "Select One", Stat5File2 = "Select One", Stat6File2 = "Select One";
  std::string Stat1File3 = "Select One", Stat2File3 = "Select One", Stat3File3 = "Select One",
              Stat4File3 = "Select One", Stat5File3 = "Select One", Stat6File3 = "Select One";
  std::vector<std::string> StatisticColumnItems;  // items of the 18 column drop-downs
  ControlView Label25{"Directory To MetaStock Format Price Files"};
  bool Label25ButtonTextColour = false;    // set once special functions were ticked
  bool PathToMSPxFilesEmphasised = false;  // blue and bold once special functions were ticked
  ControlView BrowseToMSPxFilePath{"Browse To Directory", false};

  // --- Download page ---
  int AllDailyForceFull = 0;
  int AllPeriodsForceFull = 0;
  int ForceFullDownload = 0;  // never saved: lasts one run
  bool VendoreSignal = false, VendorYahoo = false, VendorReuters = false, VendorOther = false;
  int DailyInterval = 0, WeeklyInterval = 0, MonthlyInterval = 0, QuarterlyInterval = 0;
  bool PeriodBoxesEnabled = true;
  ListBox List5;      // master list: "Available Indexes and ETFs"
  ListBox List6;      // download list: "Index and ETF Datafiles To Be Downloaded"
  std::string Text5;  // search text of the "select" button

  ControlView DownLoadButton{"When a Download List Is Loaded, Click Here To Download"};
  ControlView SaveDownloadList{"Save Download List"};
  ControlView MoveAllToDownloadList{"Move All Issues To List"};
  ControlView LoadDownloadFile{"Restore Download List"};
  ControlView ClearList{"Clear the Download List"};
  ControlView DownloadProgressFrame{"Download Progress"};
  ControlView Frame2{"Start Download"};
  ControlView Label13{"Download progress is displayed here"};
  // Which datafiles the last run could not update; shown only after a run with failures.
  ControlView RunProblems{"", false};
  // What the last run did, every line of its RunSummary, under a heading that says plainly whether
  // every file is up to date, so a run that fetched nothing cannot pass for a success. Emptied with
  // RunProblems when another list is selected.
  ControlView RunOutcome{"The result of a download is shown here."};
  std::vector<std::string> RunSummaryLines;
  bool RunFailed = false;
  // What the last "select" search found, so a search without a match does not pass unnoticed.
  std::string SearchResult;
  ControlView ButtonBarFrame{"Select a Download List"};
  int SelectedList = 0;  // the list whose button was clicked last (CurrentListNumber), marked on it
  ProgressBar ProgressBar1;
  ControlView FullPath{"/ovalith/data/"};

  // --- Window, tabs and help pages ---
  std::string WindowTitle;
  ControlView DisplayVersionNum;
  std::array<ControlView, kTabCount> Tabs{
      ControlView{"I&ntroduction"}, ControlView{"&Step By Step Setup"},
      ControlView{"General Settings"}, ControlView{"&Download File Settings"},
      ControlView{"Special Functions", false, false}};
  int CurrentTab = 0;
  std::string WebBrowser1Page;  // full path of the page shown in the introduction browser
  std::string WebBrowser2Page;  // full path of the page shown in the setup browser
  // Bold state of the seven setup help buttons, in the order of HelpButton.
  std::array<bool, 7> HelpButtonBold{};
  // Work the window starts by itself (the master list after the first save) and outcomes nothing
  // else on the page shows; the window's status line.
  std::string StatusText;
};

// A check box's value as the settings file and the settings report write it: " 1" / " 0".
std::string CheckText(int value);

// Back to the state before any run, progress bar included; the list in hand has not been run yet.
void ClearRunOutcome(WindowState& ui);

}  // namespace corvanet
