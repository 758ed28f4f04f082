#include "core/lists/list_editing.h"

#include <algorithm>
#include <unordered_set>

#include "core/lists/captions.h"
#include "core/lists/download_lists.h"
#include "core/lists/masterfile.h"
#include "core/platform/field_reader.h"
#include "core/platform/text.h"
#include "core/state/log.h"

namespace corvanet {

namespace {

constexpr std::string_view kLoadAList = "Please load a download list!";

char LowerAscii(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool ContainsIgnoreCase(std::string_view text, std::string_view lower_needle) {
  const auto found = std::search(text.begin(), text.end(), lower_needle.begin(), lower_needle.end(),
                                 [](char a, char b) { return LowerAscii(a) == b; });
  return found != text.end() || lower_needle.empty();
}

// The download list's items in lower case: the same test as IsInList, without walking the whole box
// for every master item (a search with an empty text checks the whole master list).
class ListLookup {
 public:
  explicit ListLookup(const ListBox& box) {
    items_.reserve(box.size());
    for (const std::string& item : box.items) items_.insert(ToLower(item));
  }
  // Appends the item unless it is empty or already there in any letter case.
  bool AddIfMissing(ListBox& box, const std::string& item) {
    if (item.empty() || !items_.insert(ToLower(item)).second) return false;
    box.Add(item);
    return true;
  }

 private:
  std::unordered_set<std::string> items_;
};

// Removes every selected item in one pass: the same result as removing them one at a time, and
// short enough that the window need not repaint in between.
void RemoveSelectedItems(Session& session) {
  ListBox& box = session.ui.List6;
  std::size_t kept = 0;
  for (std::size_t i = 0; i < box.size(); ++i) {
    if (box.selected[i]) continue;
    if (kept != i) box.items[kept] = std::move(box.items[i]);
    ++kept;
  }
  box.items.resize(kept);
  box.selected.assign(kept, false);
  session.NotifyObserver();
}

// The bulk commands need a user list: none loaded, or a full list, is refused with a message.
bool MayChangeList(Session& session, std::string_view read_only_message) {
  const int n = CurrentListNumber(session);
  if (n == 0) {
    session.shell.Notify(kLoadAList);
    return false;
  }
  if (n > 5) {
    session.shell.Notify(read_only_message);
    return false;
  }
  return true;
}

}  // namespace

bool IsInList(const ListBox& box, std::string_view text) {
  return !text.empty() && box.FindExactIgnoreCase(text) >= 0;
}

std::string ShortenedIssueName(std::string_view name) {
  // Cutting a fixed two characters before the bracket took the last letter of a name without one
  // ("S&P 100 Inde"); a name keeps everything before its note.
  std::string_view kept = name.substr(0, name.find('('));
  while (!kept.empty() && kept.back() == ' ') kept.remove_suffix(1);
  return std::string(kept);
}

bool AddByString_Click(Session& session) {
  LogEntry(session, "AddByString_Click");
  if (!MayChangeList(session, "Cannot add to or change this download list.")) return false;
  const std::string needle = ToLower(session.ui.Text5);
  ListLookup lookup(session.ui.List6);
  int matches = 0;
  int added = 0;
  for (const std::string& item : session.ui.List5.items) {
    if (!ContainsIgnoreCase(item, needle)) continue;
    ++matches;
    if (lookup.AddIfMissing(session.ui.List6, item)) ++added;
  }
  session.ui.SearchResult = SearchResultText(session.ui, matches, added);
  ChangeCaptionsOnButtons(session);
  return true;
}

std::string SearchResultText(const WindowState& ui, int matches, int added) {
  const std::string quoted = "\"" + ui.Text5 + "\"";
  if (ui.List5.size() == 0) return "There is no list of indexes and ETFs to search yet.";
  if (matches == 0) return "No index or ETF holds " + quoted + ".";
  if (added == 0) return "Every index or ETF holding " + quoted + " is already on the list.";
  return std::to_string(added) + " index(es) or ETF(s) holding " + quoted + " added to the list.";
}

bool MoveAllToDownloadList_Click(Session& session) {
  LogEntry(session, "MoveAllToDownloadList_Click");
  if (!MayChangeList(session, "Cannot change this download list.")) return false;
  ClearList_Click(session);
  // The master file, not the master list box: only this command drops the bracketed notes.
  const std::string path = MasterFilePath(session);
  FieldReader reader;
  if (!reader.Open(path)) {
    Log(session, "MoveAllToDownloadList_Click - cannot read " + path);
  } else {
    std::string name;
    std::string symbol;
    while (!reader.AtEnd()) {
      if (!reader.ReadRecord(name, symbol)) {
        Log(session,
            "MoveAllToDownloadList_Click - the last record of " + path + " has no symbol: " + name);
        break;
      }
      session.ui.List6.Add(ShortenedIssueName(name) + "," + symbol);
    }
    if (reader.failed()) Log(session, "MoveAllToDownloadList_Click - read error in " + path);
  }
  ChangeCaptionsOnButtons(session);
  return true;
}

bool ClearList_Click(Session& session) {
  LogEntry(session, "ClearList_Click");
  const int n = CurrentListNumber(session);
  if (n > 5) {
    session.shell.Notify("Cannot clear this download list.");
    return false;
  }
  session.ui.List6.Clear();
  if (n == 0) {
    session.shell.Notify(kLoadAList);
    return false;
  }
  ChangeCaptionsOnButtons(session);
  return true;
}

std::string List5_OLEStartDrag(Session& session) {
  LogEntry(session, "List5_OLEStartDrag");
  if (CurrentListNumber(session) == 0) {
    session.shell.Notify(kLoadAList);
    return {};
  }
  std::string drag_text;
  const ListBox& master = session.ui.List5;
  for (std::size_t i = 0; i < master.size(); ++i) {
    if (!master.selected[i]) continue;
    if (!drag_text.empty()) drag_text += '|';
    drag_text += std::to_string(i);
  }
  return drag_text;
}

void List6_OLEDragDrop(Session& session, std::string_view drag_text) {
  LogEntry(session, "List6_OLEDragDrop");
  if (CurrentListNumber(session) == 0) return;
  const ListBox& master = session.ui.List5;
  ListLookup lookup(session.ui.List6);
  std::size_t start = 0;
  for (;;) {
    const std::size_t bar = drag_text.find('|', start);
    const std::string_view part = drag_text.substr(start, bar - start);
    int position = -1;
    if (ParseInteger(part, position) && position >= 0 &&
        static_cast<std::size_t>(position) < master.size()) {
      lookup.AddIfMissing(session.ui.List6, master.items[static_cast<std::size_t>(position)]);
    } else if (session.logging()) {
      Log(session, "List6_OLEDragDrop - \"" + std::string(part) + "\" is no master list position");
    }
    if (bar == std::string_view::npos) break;
    start = bar + 1;
  }
}

void List6_DblClick(Session& session) {
  LogEntry(session, "List6_DblClick");
  RemoveSelectedItems(session);
}

void List6_KeyUp(Session& session, int key_code) {
  LogEntry(session, "List6_KeyUp");
  if (key_code == kDeleteKeyCode) RemoveSelectedItems(session);
}

}  // namespace corvanet
