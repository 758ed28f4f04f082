#include "gui/folder_browse.h"

#include <QDir>
#include <QFileDialog>

#include "core/app/settings.h"
#include "core/platform/files.h"
#include "core/platform/paths.h"
#include "core/state/log.h"

namespace corvanet::gui {

namespace {

std::string WindowState::*FieldOf(FolderKind kind) {
  switch (kind) {
    case FolderKind::kDataFiles:
      return &WindowState::PathToDataFiles;
    case FolderKind::kLists:
      return &WindowState::PathToLists;
    case FolderKind::kMSPxFiles:
      break;
  }
  return &WindowState::PathToMSPxFiles;
}

std::string_view KeyOf(FolderKind kind) {
  switch (kind) {
    case FolderKind::kDataFiles:
      return "PathToDataFiles";
    case FolderKind::kLists:
      return "PathToLists";
    case FolderKind::kMSPxFiles:
      break;
  }
  return "PathToMSPxFiles";
}

std::string_view HandlerName(FolderKind kind) {
  switch (kind) {
    case FolderKind::kDataFiles:
      return "BrowseToDownloadPath_Click";
    case FolderKind::kLists:
      return "BrowseToCompositeListPath_Click";
    case FolderKind::kMSPxFiles:
      break;
  }
  return "BrowseToMSPxFilePath_Click";
}

}  // namespace

std::string BrowseTitle(FolderKind kind) {
  // The price-file folder never had a title of its own and shares the list folder's.
  return kind == FolderKind::kDataFiles ? "Browse to your data directory & 'Save'"
                                        : "Browse to your composite list directory & 'Save'";
}

std::string BrowseStartFolder(const Session& session, FolderKind kind) {
  const std::string& field = session.ui.*FieldOf(kind);
  return field.empty() ? session.app.ProgramDirectory : field;
}

void ApplyBrowsedFolder(Session& session, FolderKind kind, const std::string& chosen) {
  if (!chosen.empty()) {
    SetSetting(session, *FindSetting(KeyOf(kind)), WithTrailingSeparator(chosen),
               ValueSource::kUser);
  }
  if (kind == FolderKind::kLists) return;
  const std::string& field = session.ui.*FieldOf(kind);
  if (field.empty()) return;  // "" would name the current folder
  for (const char* period : {"Daily", "Weekly", "Monthly", "Quarterly"}) {
    const std::string folder = field + period;
    if (!CreateFolder(folder)) Log(session, "BrowseToDirectory - cannot create " + folder);
  }
}

void BrowseToDirectory(Session& session, FolderKind kind, QWidget* parent) {
  LogEntry(session, HandlerName(kind));
  LogEntry(session, "BrowseToDirectory");
  const QString chosen =
      QFileDialog::getExistingDirectory(parent, QString::fromStdString(BrowseTitle(kind)),
                                        QString::fromStdString(BrowseStartFolder(session, kind)));
  ApplyBrowsedFolder(
      session, kind,
      chosen.isEmpty() ? std::string() : QDir::toNativeSeparators(chosen).toStdString());
}

}  // namespace corvanet::gui
