#pragma once
// Editing the download list box from the master list box. Every edit changes the box alone; the
// list file is written only by SaveDownloadList_Click.
#include <string>
#include <string_view>

#include "core/state/session.h"

namespace corvanet {

// True when the box holds an item equal to `text` ignoring letter case; false for an empty text.
bool IsInList(const ListBox& box, std::string_view text);

// Adds every master item holding the search text of Text5 (any letter case) not yet in the list,
// and says in SearchResult what it found.
bool AddByString_Click(Session& session);
// What a search for Text5 found: `matches` master items held it, `added` of them were new.
std::string SearchResultText(const WindowState& ui, int matches, int added);
// Replaces the download list by the whole master file, names shortened before their "(".
bool MoveAllToDownloadList_Click(Session& session);
// These three return false when the list may not be changed (none loaded, or a full list); a
// message says so.
bool ClearList_Click(Session& session);

// The drag text of the selected master items: their positions joined by "|" ("0|4|17"). Empty
// when no list is loaded (the drag is refused) or nothing is selected.
std::string List5_OLEStartDrag(Session& session);
// Appends the master items a drag text names that are not yet in the list. Parts that name no
// master item are ignored one by one; with no list loaded the drop is ignored.
void List6_OLEDragDrop(Session& session, std::string_view drag_text);

// Both remove every selected item of the download list box; the key only when it is Delete.
void List6_DblClick(Session& session);
inline constexpr int kDeleteKeyCode = 46;
void List6_KeyUp(Session& session, int key_code);

// The Move All rule: the name before its first "(", without the blanks that stood before it (the
// note goes); a name without "(" stays whole. "(x)" gives "".
std::string ShortenedIssueName(std::string_view name);

}  // namespace corvanet
