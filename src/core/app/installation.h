#pragma once
#include <string>
#include <string_view>

#include "core/state/session.h"

namespace corvanet {

// A new installation: when ProgramDirectory holds no Rondex.ini (the folder may be missing, or hold
// only the programs an installer put there), create it with a Rondex.ini of working defaults, the
// data folder (CSVFiles/ with Base/ and the four period folders) and the lists folder with the help
// pages and Stats.csv. False when something could not be created.
bool EnsureInstallation(Session& session);

// The folder a new installation gives the path setting `key` (PathToDataFiles, PathToLists,
// PathToMSPxFiles); "" for any other key.
std::string DefaultFolder(const Session& session, std::string_view key);

// Writes the files the lists folder carries (the help pages, Stats.csv); with `only_missing`, the
// ones missing. False when one could not be written.
bool WriteListFolderFiles(const std::string& lists_folder, bool only_missing);

}  // namespace corvanet
