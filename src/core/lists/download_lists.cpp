#include "core/lists/download_lists.h"

#include <algorithm>

#include <array>
#include <limits>
#include <string_view>
#include <vector>

#include "core/lists/captions.h"
#include "core/lists/masterfile.h"
#include "core/platform/files.h"
#include "core/platform/line_reader.h"
#include "core/platform/text.h"
#include "core/state/log.h"

namespace corvanet {

namespace {

constexpr std::string_view kLoadAList = "Please load a download list!";
constexpr std::size_t kHeaderRecords = 5;
constexpr std::size_t kHeaderFields = 2 * kHeaderRecords;

struct PeriodBox {
  std::string_view key;
  int WindowState::*box;
};
constexpr std::array<PeriodBox, 4> kPeriodBoxes{{
    {"DailyInterval", &WindowState::DailyInterval},
    {"WeeklyInterval", &WindowState::WeeklyInterval},
    {"MonthlyInterval", &WindowState::MonthlyInterval},
    {"QuarterlyInterval", &WindowState::QuarterlyInterval},
}};

// A full list fixes its own periods: daily only (the first), or all four.
bool FullListTicks(int list_number, std::size_t period_index) {
  return list_number == 7 || period_index == 0;
}

// A full list's saved file says the same as FullListTicks, but a list never saved has no file, and
// its run must not take the boxes of the list shown before.
void FixFullListPeriods(WindowState& ui, int list_number) {
  if (!IsFullList(list_number)) return;
  for (std::size_t period = 0; period < kPeriodBoxes.size(); ++period) {
    ui.*kPeriodBoxes[period].box = FullListTicks(list_number, period) ? 1 : 0;
  }
}

constexpr std::array<VendorOption, 4> kVendors{{
    {"eSignal", "eSignal", &WindowState::VendoreSignal},
    {"Reuters", "Reuters", &WindowState::VendorReuters},
    {"Yahoo", "Yahoo", &WindowState::VendorYahoo},
    {"ORG", "Other", &WindowState::VendorOther},
}};

void SelectVendor(Session& session, std::string_view word) {
  bool known = false;
  for (const VendorOption& vendor : kVendors) {
    // Exact: a word in another letter case is not one the program wrote, so it is treated as
    // unknown and the next save asks for a vendor.
    const bool match = word == vendor.word;
    session.ui.*vendor.option = match;
    known = known || match;
  }
  if (!known) {
    Log(session, "LoadDownloadFile_Click - unknown data vendor \"" + std::string(word) +
                     "\"; no vendor selected");
  }
}

// Reads the vendor line and the four period lines into the options and boxes. False when the file
// ends first; the boxes read so far keep their new values.
bool RestoreHeader(Session& session, FieldReader& reader, const std::string& path) {
  std::string first;
  std::string second;
  if (!reader.ReadRecord(first, second)) {
    Log(session, "LoadDownloadFile_Click - " + path + " holds no vendor line");
    return false;
  }
  const std::string vendor = TrimCopy(second);
  Log(session, vendor);
  SelectVendor(session, vendor);
  for (const PeriodBox& period : kPeriodBoxes) {
    if (!reader.ReadRecord(first, second)) {
      Log(session, "LoadDownloadFile_Click - " + path + " ends before its " +
                       std::string(period.key) + " line");
      return false;
    }
    if (first != period.key) {
      Log(session, "LoadDownloadFile_Click - " + path + " has \"" + first + "\" where the " +
                       std::string(period.key) + " line belongs");
    }
    const double value = LeadingNumber(second);
    session.ui.*period.box = value != 0 ? 1 : 0;
    if (session.logging()) {
      Log(session, std::string(period.key) + ".Value =" + std::to_string(session.ui.*period.box));
    }
  }
  return true;
}

// Lists 1-5: records of two fields, shown as name + "," + symbol.
void RestoreUserItems(Session& session, FieldReader& reader, const std::string& path) {
  std::string name;
  std::string symbol;
  while (!reader.AtEnd()) {
    if (!reader.ReadRecord(name, symbol)) {
      Log(session,
          "LoadDownloadFile_Click - the last record of " + path + " has no symbol: " + name);
      break;
    }
    session.ui.List6.Add(name + "," + symbol);
  }
}

// Lists 6 and 7 show their issue lines whole. The header records are passed over the way the field
// reader takes them (ten fields, blank lines holding none), so both agree where the issues begin.
void RestoreWholeLines(Session& session, const std::string& path) {
  LineReader lines;
  if (!lines.Open(path)) return;
  std::vector<std::string> fields;
  std::size_t header_fields = 0;
  std::string_view line;
  while (header_fields < kHeaderFields && lines.Next(line)) {
    if (Trim(line).empty()) continue;
    fields.clear();
    SplitFields(line, fields);
    header_fields += fields.size();
  }
  if (header_fields > kHeaderFields) {
    Log(session, "LoadDownloadFile_Click - fields after the header of " + path + " dropped");
  }
  while (lines.Next(line)) {
    const std::string_view item = Trim(line);
    if (!item.empty()) session.ui.List6.Add(std::string(item));
  }
}

}  // namespace

bool IsFullList(int list_number) {
  return list_number == 6 || list_number == 7;
}

std::span<const VendorOption> VendorOptions() {
  return kVendors;
}

const VendorOption* ChosenVendor(const WindowState& ui) {
  for (const VendorOption& vendor : kVendors) {
    if (ui.*vendor.option) return &vendor;
  }
  return nullptr;
}

bool LogInEntered(const WindowState& ui) {
  const WindowState initial;
  return !ui.UserName.empty() && !ui.Password.empty() && ui.UserName != initial.UserName &&
         ui.Password != initial.Password;
}

bool AnyPeriodTicked(const WindowState& ui) {
  return std::any_of(kPeriodBoxes.begin(), kPeriodBoxes.end(),
                     [&ui](const PeriodBox& period) { return ui.*period.box != 0; });
}

int CurrentListNumber(const Session& session) {
  const double value = LeadingNumber(session.app.CurrentListNumber);
  // Only the handlers set the text; anything outside int's range is no list at all.
  if (!(value > std::numeric_limits<int>::min() && value < std::numeric_limits<int>::max())) {
    return 0;
  }
  return static_cast<int>(value);
}

std::string DownLoadType(const Session& session) {
  const int n = CurrentListNumber(session);
  if (n == 6) return "'All Daily' Periods";
  if (n == 7) return "'All Periods'";
  return "Download List " + std::to_string(n);
}

std::string DownloadListPath(const Session& session, int list_number) {
  return session.ui.PathToLists + "Download" + std::to_string(list_number) + ".csv";
}

std::array<bool, 4> SavedListPeriods(const Session& session, int list_number) {
  std::array<bool, 4> ticked{};
  if (IsFullList(list_number)) {
    for (std::size_t period = 0; period < ticked.size(); ++period) {
      ticked[period] = FullListTicks(list_number, period);
    }
    return ticked;
  }
  FieldReader reader;
  if (!reader.Open(DownloadListPath(session, list_number))) return ticked;
  std::string first;
  std::string second;
  if (!reader.ReadRecord(first, second)) return ticked;  // the vendor line
  // Read as RestoreHeader reads them: the second field's number, whatever the first says.
  for (bool& period : ticked) {
    if (!reader.ReadRecord(first, second)) break;
    period = LeadingNumber(second) != 0;
  }
  return ticked;
}

bool SavedListNamesVendor(const Session& session, int list_number) {
  FieldReader reader;
  std::string first;
  std::string second;
  if (!reader.Open(DownloadListPath(session, list_number)) || !reader.ReadRecord(first, second)) {
    return false;
  }
  const std::string vendor = TrimCopy(second);
  return std::any_of(kVendors.begin(), kVendors.end(),
                     [&vendor](const VendorOption& option) { return vendor == option.word; });
}

void DownloadList_Click(Session& session, int list_number) {
  LogEntry(session, "DownloadList" + std::to_string(list_number) + "_Click");
  if (list_number < 1 || list_number > 7) {
    Log(session, "DownloadList_Click - there is no list " + std::to_string(list_number));
    return;
  }
  if (IsFullList(list_number)) session.ui.List6.Clear();
  // What was said about the list shown before is not about this one.
  ClearRunOutcome(session.ui);
  session.ui.SearchResult.clear();
  session.app.CurrentListNumber = std::to_string(list_number);
  session.ui.SelectedList = list_number;
  LoadDownloadFile_Click(session);
  ChangeCaptionsOnButtons(session);
}

void LoadDownloadFile_Click(Session& session) {
  LogEntry(session, "LoadDownloadFile_Click");
  session.ui.List6.Clear();
  const int n = CurrentListNumber(session);
  if (n == 0) {
    session.shell.Notify(kLoadAList);
    return;
  }
  const std::string path = DownloadListPath(session, n);
  FieldReader reader;
  if (!reader.Open(path)) {
    // A list is only written by its first save; until then there is nothing to show.
    Log(session, "LoadDownloadFile_Click - cannot read " + path + "; the list is empty");
  } else if (RestoreHeader(session, reader, path)) {
    if (IsFullList(n)) {
      reader.Close();
      RestoreWholeLines(session, path);
    } else {
      RestoreUserItems(session, reader, path);
    }
  }
  if (reader.failed()) Log(session, "LoadDownloadFile_Click - read error in " + path);
  session.app.ListItemsAsSaved = session.ui.List6.items;
  FixFullListPeriods(session.ui, n);
  ChangeCaptionsOnButtons(session);
}

bool DownloadListMayBeSaved(Session& session) {
  const WindowState& ui = session.ui;
  if (CurrentListNumber(session) == 0) {
    session.shell.Notify(kLoadAList);
    return false;
  }
  if (!AnyPeriodTicked(ui)) {
    session.shell.Notify("Please select a Data Period!");
    return false;
  }
  if (ChosenVendor(ui) == nullptr) {
    session.shell.Notify("Please select a Data Vendor!");
    return false;
  }
  return true;
}

bool WriteDownloadList(Session& session) {
  WindowState& ui = session.ui;
  const int n = CurrentListNumber(session);
  const VendorOption* vendor = ChosenVendor(ui);
  if (vendor == nullptr) return false;
  // The boxes too, not only the file: a run started next reads its periods from them.
  FixFullListPeriods(ui, n);
  ChangeCaptionsOnButtons(session);

  const std::string path = DownloadListPath(session, n);
  AtomicFileWriter writer(path);
  std::string line;
  line.append(vendor->word).append(",").append(vendor->word);
  writer.WriteLine(line);
  for (const PeriodBox& period : kPeriodBoxes) {
    line.assign(period.key).append(",").append(std::to_string(ui.*period.box));
    writer.WriteLine(line);
  }
  for (const std::string& item : ui.List6.items) {
    writer.WriteLine(IsFullList(n) ? Trim(item) : std::string_view(item));
  }
  if (!writer.Commit()) {
    Log(session, "SaveDownloadList_Click - could not write " + path + ": " + writer.error());
    session.shell.Notify("Corvanet could not save " + path + ".\rThe list file is kept as it was.");
    ChangeCaptionsOnButtons(session);
    return false;
  }
  session.app.ListItemsAsSaved = ui.List6.items;
  ChangeCaptionsOnButtons(session);
  return true;
}

bool DownloadListUnsaved(const Session& session) {
  const int n = CurrentListNumber(session);
  return n >= 1 && n <= 5 && session.ui.List6.items != session.app.ListItemsAsSaved;
}

bool OpenDownloadList(Session& session, FieldReader& reader) {
  LogEntry(session, "OpenDownloadList");
  const int n = CurrentListNumber(session);
  if (IsFullList(n)) {
    // The full lists always walk the whole master file; their own file only fixes the periods.
    const std::string path = MasterFilePath(session);
    if (reader.Open(path)) return true;
    Log(session, "OpenDownloadList - cannot read " + path);
    return false;
  }
  if (n < 1 || n > 5) {
    Log(session, "OpenDownloadList - no list is loaded");
    return false;
  }
  const std::string path = DownloadListPath(session, n);
  if (!reader.Open(path)) {
    Log(session, "OpenDownloadList - cannot read " + path);
    return false;
  }
  std::string first;
  std::string second;
  for (std::size_t i = 0; i < kHeaderRecords; ++i) {
    if (!reader.ReadRecord(first, second)) {
      Log(session, "OpenDownloadList - " + path + " ends within its five header lines");
      break;
    }
  }
  return true;
}

}  // namespace corvanet
