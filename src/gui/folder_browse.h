#pragma once
// The three "Browse To Directory" buttons: a folder picker for the data folder (kind 1), the list
// folder (kind 2) and the MetaStock price-file folder (kind 3).
#include <string>

#include "core/state/session.h"

class QWidget;

namespace corvanet::gui {

enum class FolderKind { kDataFiles = 1, kLists = 2, kMSPxFiles = 3 };

// The picker's title ("Browse to your data directory & 'Save'" for the data folder).
std::string BrowseTitle(FolderKind kind);
// The folder the picker opens in: the field's text, or the program's folder when it is empty.
std::string BrowseStartFolder(const Session& session, FolderKind kind);

// After the picker: a chosen folder ("" when cancelled) goes into the field with its trailing
// separator. The data and price-file folders then get their four period folders, under the field
// as it now stands, cancelled or not; existing folders are left as they are.
void ApplyBrowsedFolder(Session& session, FolderKind kind, const std::string& chosen);

// BrowseToDownloadPath_Click, BrowseToCompositeListPath_Click, BrowseToMSPxFilePath_Click.
void BrowseToDirectory(Session& session, FolderKind kind, QWidget* parent);

}  // namespace corvanet::gui
