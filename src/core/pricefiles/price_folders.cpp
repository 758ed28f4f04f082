#include "core/pricefiles/price_folders.h"

#include <string>
#include <string_view>

#include "core/download/datafile_names.h"
#include "core/platform/files.h"
#include "core/platform/paths.h"
#include "core/state/log.h"

namespace corvanet {

namespace {

// `root` + `name`, then its four period folders. A folder that exists or cannot be made is passed
// over and the next one is tried.
void MakeKindFolders(const std::string& root, std::string_view name) {
  CreateFolder(root + std::string(name));
  for (const std::string_view period : kPeriodNames) {
    CreateFolder(root + Folder(name) + std::string(period));
  }
}

void UserDefFile_Click(Session& session, int file, int WindowState::*box) {
  const std::string folder = "PxFile" + std::to_string(file);
  LogEntry(session, "UserDefFile" + std::to_string(file) + "_Click");
  if (session.ui.*box == 0) return;
  MakeKindFolders(session.ui.PathToDataFiles, folder);
  MakeKindFolders(session.ui.PathToMSPxFiles, folder);
}

}  // namespace

void OHLCVV_Click(Session& session) {
  LogEntry(session, "OHLCVV_Click");
  if (session.ui.OHLCVV == 0) return;
  MakeKindFolders(session.ui.PathToDataFiles, "PX");
}

void EqWtOHLCVV_Click(Session& session) {
  LogEntry(session, "EqWtOHLCVV_Click");
  if (session.ui.EqWtOHLCVV == 0) return;
  // The CSV files lie in "PxEqWt", their MetaStock output in "EqWtPriceFiles": kept as users
  // have them.
  MakeKindFolders(session.ui.PathToDataFiles, "PxEqWt");
  MakeKindFolders(session.ui.PathToMSPxFiles, "EqWtPriceFiles");
}

void UserDefFile1_Click(Session& session) {
  UserDefFile_Click(session, 1, &WindowState::UserDefFile1);
}
void UserDefFile2_Click(Session& session) {
  UserDefFile_Click(session, 2, &WindowState::UserDefFile2);
}
void UserDefFile3_Click(Session& session) {
  UserDefFile_Click(session, 3, &WindowState::UserDefFile3);
}

}  // namespace corvanet
