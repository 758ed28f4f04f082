#include "core/app/run_folders.h"

#include <cassert>

#include "core/app/installation.h"
#include "core/download/datafile_names.h"
#include "core/platform/files.h"
#include "core/platform/paths.h"
#include "core/platform/run_lock.h"
#include "core/pricefiles/price_files.h"
#include "core/state/log.h"
#include "core/stats/single_stat_files.h"
#include "core/stats/statistic_catalogue.h"

namespace corvanet {

namespace {

constexpr const char* kMetaStockKindFolders[] = {"", "EqWtPriceFiles", "PxFile1", "PxFile2",
                                                 "PxFile3"};

bool PeriodTicked(const WindowState& ui, int index) {
  const int boxes[] = {ui.DailyInterval, ui.WeeklyInterval, ui.MonthlyInterval,
                       ui.QuarterlyInterval};
  return boxes[index] != 0;
}

void AddStatisticFolders(const WindowState& ui, std::string_view statistic,
                         std::vector<std::string>& folders) {
  for (const std::string_view period : kPeriodNames) {
    folders.push_back(StatisticFolder(ui, period, statistic));
  }
}

// Every folder a run may write a file in, whether or not its option is on now: a killed run may
// have been started with other options.
std::vector<std::string> WrittenFolders(const Session& session) {
  const WindowState& ui = session.ui;
  std::vector<std::string> folders{session.app.ProgramDirectory, session.app.BaseDirectory,
                                   ui.PathToLists, ui.PathToDataFiles,
                                   ui.PathToDataFiles + Folder("Base")};
  for (const std::string_view period : kPeriodNames) {
    folders.push_back(ui.PathToDataFiles + Folder(period));
    for (const PriceFileKind& kind : PriceFileKinds()) {
      folders.push_back(ui.PathToDataFiles + Folder(kind.folder) + Folder(period));
    }
    for (const char* kind : kMetaStockKindFolders) {
      const std::string root =
          *kind == '\0' ? ui.PathToMSPxFiles : ui.PathToMSPxFiles + Folder(kind);
      folders.push_back(root + Folder(period));
    }
  }
  for (const StatisticDef& statistic : StatisticCatalogue()) {
    AddStatisticFolders(ui, statistic.name, folders);
  }
  return folders;
}

void MakeFolder(const std::string& folder, std::vector<std::string>& problems) {
  if (DirectoryExists(folder) || CreateFolders(folder)) return;
  problems.push_back("the folder " + folder + " is missing and could not be made");
}

}  // namespace

bool MakeListFolder(Session& session) {
  const std::string& folder = session.ui.PathToLists;
  if (folder.empty() || DirectoryExists(folder)) return true;
  if (!CreateFolders(folder) || !WriteListFolderFiles(folder, true)) {
    Log(session,
        "MakeListFolder - the lists folder " + folder + " is missing and could not be made");
    return false;
  }
  Log(session, "MakeListFolder - the lists folder " + folder + " was missing and is made again");
  return true;
}

std::vector<std::string> MakeRunFolders(Session& session) {
  const WindowState& ui = session.ui;
  std::vector<std::string> problems;
  MakeFolder(ui.PathToDataFiles + Folder("Base"), problems);
  for (int i = 0; i < 4; ++i) {
    if (!PeriodTicked(ui, i)) continue;
    const std::string_view period = kPeriodNames[i];
    MakeFolder(ui.PathToDataFiles + Folder(period), problems);
    if (ui.MakeMetaStockPxFiles != 0) {
      for (const PriceFileKind& kind : PriceFileKinds()) {
        if (ui.*kind.ticked != 0) {
          MakeFolder(ui.PathToDataFiles + Folder(kind.folder) + Folder(period), problems);
        }
      }
    }
  }
  if (ui.AutoCreateOneStatFiles != 0) {
    std::vector<std::string> folders;
    for (const StatisticDef& statistic : StatisticCatalogue()) {
      if (ui.*statistic.box != 0) AddStatisticFolders(ui, statistic.name, folders);
    }
    for (const std::string& folder : folders) MakeFolder(folder, problems);
  }
  return problems;
}

int SweepTemporaryFiles(Session& session) {
  // Writers of a process holding the run lock leave their files unlocked: only a run sweeps.
  assert(RunLock::HeldDescriptor() >= 0);
  int removed = 0;
  for (const std::string& folder : WrittenFolders(session)) {
    removed += RemoveStaleTemporaryFiles(folder.empty() ? std::string(".") : folder);
  }
  return removed;
}

}  // namespace corvanet
