// list N [EDIT ...]: select list N as its button does, apply the edits in order, then save; with no
// edit, print the list's items.
#include <array>
#include <vector>

#include "cli/commands.h"
#include "core/app/settings_buttons.h"
#include "core/lists/download_lists.h"
#include "core/lists/list_editing.h"
#include "core/platform/files.h"
#include "core/platform/text.h"

namespace corvanet::cli {

namespace {

enum class EditKind { kAdd, kMoveAll, kClear, kRemove, kVendor, kPeriods };

struct Edit {
  EditKind kind;
  std::string text;  // search text, item, vendor word or period letters
};

constexpr std::string_view kUsage = "list";

// The vendors by their captions, in any letter case.
const VendorOption* FindVendor(std::string_view caption) {
  for (const VendorOption& vendor : VendorOptions()) {
    if (EqualsIgnoreCase(caption, vendor.caption)) return &vendor;
  }
  return nullptr;
}

// "D,W,M,Q" (or the periods' names) as the four box values; false on an unknown part.
bool ParsePeriods(std::string_view text, std::array<int, 4>& boxes) {
  constexpr std::array<std::string_view, 4> kNames{"Daily", "Weekly", "Monthly", "Quarterly"};
  boxes = {0, 0, 0, 0};
  std::size_t start = 0;
  for (;;) {
    const std::size_t comma = text.find(',', start);
    const std::string_view part = Trim(text.substr(start, comma - start));
    bool known = false;
    for (std::size_t i = 0; i < kNames.size(); ++i) {
      if (EqualsIgnoreCase(part, kNames[i]) || EqualsIgnoreCase(part, kNames[i].substr(0, 1))) {
        boxes[i] = 1;
        known = true;
      }
    }
    if (!known) return false;
    if (comma == std::string_view::npos) return true;
    start = comma + 1;
  }
}

// Parses every edit before anything changes, so a typo changes nothing.
bool ParseEdits(CommandContext& context, const std::vector<std::string>& args,
                std::vector<Edit>& edits, int& status) {
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& word = args[i];
    const bool has_argument = i + 1 < args.size();
    if (word == "move-all") {
      edits.push_back({EditKind::kMoveAll, {}});
    } else if (word == "clear") {
      edits.push_back({EditKind::kClear, {}});
    } else if (word == "add" || word == "remove" || word == "vendor" || word == "periods") {
      if (!has_argument) {
        status = UsageError(context, kUsage, word + " needs an argument");
        return false;
      }
      const std::string& argument = args[++i];
      EditKind kind = EditKind::kAdd;
      if (word == "remove") kind = EditKind::kRemove;
      if (word == "vendor") {
        kind = EditKind::kVendor;
        if (FindVendor(argument) == nullptr) {
          status = UsageError(context, kUsage,
                              "vendor takes eSignal, Reuters, Yahoo or Other, not " + argument);
          return false;
        }
      }
      if (word == "periods") {
        kind = EditKind::kPeriods;
        std::array<int, 4> boxes{};
        if (!ParsePeriods(argument, boxes)) {
          status = UsageError(context, kUsage, "periods takes letters of D,W,M,Q, not " + argument);
          return false;
        }
      }
      edits.push_back({kind, argument});
    } else {
      status = UsageError(context, kUsage, "unknown edit: " + word);
      return false;
    }
  }
  return true;
}

bool RemoveItem(CommandContext& context, const std::string& text) {
  ListBox& box = context.session.ui.List6;
  bool found = false;
  for (std::size_t i = 0; i < box.size(); ++i) {
    box.selected[i] = EqualsIgnoreCase(box.items[i], text);
    found = found || box.selected[i];
  }
  if (!found) {
    context.err << "corvanet-cli list: no item \"" << text << "\" to remove\n";
    return false;
  }
  List6_DblClick(context.session);
  return true;
}

// False when the program refused the edit; it has said why.
bool ApplyEdit(CommandContext& context, const Edit& edit) {
  Session& session = context.session;
  WindowState& ui = session.ui;
  switch (edit.kind) {
    case EditKind::kAdd:
      ui.Text5 = edit.text;
      return AddByString_Click(session);
    case EditKind::kMoveAll:
      return MoveAllToDownloadList_Click(session);
    case EditKind::kClear:
      return ClearList_Click(session);
    case EditKind::kRemove:
      return RemoveItem(context, edit.text);
    case EditKind::kVendor: {
      // Option buttons of one frame: choosing one clears the others.
      const VendorOption* chosen = FindVendor(edit.text);
      for (const VendorOption& vendor : VendorOptions()) ui.*vendor.option = &vendor == chosen;
      break;
    }
    case EditKind::kPeriods: {
      std::array<int, 4> boxes{};
      ParsePeriods(edit.text, boxes);
      ui.DailyInterval = boxes[0];
      ui.WeeklyInterval = boxes[1];
      ui.MonthlyInterval = boxes[2];
      ui.QuarterlyInterval = boxes[3];
      break;
    }
  }
  return true;
}

}  // namespace

int ListCommand(CommandContext& context, const CommandLine& line) {
  std::vector<Edit> edits;
  int status = kExitOk;
  if (!ParseEdits(context, line.words, edits, status)) return status;

  Session& session = context.session;
  DownloadList_Click(session, line.list);
  if (edits.empty()) {
    if (const std::string path = DownloadListPath(session, line.list); !FileExists(path)) {
      context.err << "corvanet-cli list: download list " << line.list << " has no file: " << path
                  << " is missing (a list is written when it is first saved).\n";
      return kExitRefused;
    }
    for (const std::string& item : session.ui.List6.items) context.out << item << '\n';
    return kExitOk;
  }
  // The edits after a refused one were typed expecting it to be done; none is saved.
  for (const Edit& edit : edits) {
    if (!ApplyEdit(context, edit)) return kExitRefused;
  }
  return SaveDownloadList_Click(session) ? kExitOk : kExitRefused;
}

}  // namespace corvanet::cli
