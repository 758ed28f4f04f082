#pragma once
// Opening things outside the program: the converter's log, the MetaStock program, the sample
// datafiles, a web address, and a shortcut to the window on the user's desktop.
#include <string>

#include "core/state/session.h"

namespace corvanet {

// Opens ProgramDirectory + "MSXlog.txt", the log the MetaStock converter writes.
void Help_Click(Session& session);
// Starts the MetaStock program "Mswin"; says so when there is no such program.
void OpenMetaStock_Click(Session& session);
// Offers the sample datafiles of ProgramDirectory + "SampleData" and opens the one chosen.
void OpenSampleDirectory_Click(Session& session);
// Writes a desktop entry that starts the window on this installation (its --base-dir), with the
// program's icon, in the user's desktop folder, replacing an old one. False (with a message) when
// it could not.
bool CreateShortcut_Click(Session& session);
// Opens an address with the desktop's opener; a failure is ignored.
void GoToURL(Session& session, const std::string& address);

// The sample datafiles an installation carries; laid out again when the folder is missing.
std::string SampleDataFolder(const Session& session);
bool EnsureSampleData(const Session& session);
// Where CreateShortcut_Click puts the desktop entry.
std::string ShortcutPath();
// The icon the desktop entry names, laid out in ProgramDirectory.
std::string ShortcutIconPath(const Session& session);

}  // namespace corvanet
