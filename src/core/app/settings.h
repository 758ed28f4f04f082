#pragma once
// Rondex.ini: one line per control, key, comma, value, in the fixed order of one table that both
// the reader and the writer walk.
#include <span>
#include <string>
#include <string_view>
#include <variant>

#include "core/state/session.h"

namespace corvanet {

enum class SettingForm {
  kCheck,   // check box: " 1" / " 0" (a blank where a minus sign would stand)
  kOption,  // option button: True / False
  kText,    // text as it stands
  kPath,    // text less the length of BaseDirectory; read back with BaseDirectory in front
};

struct SettingDef;
// Runs when the control's value changes, whoever changes it (the user, the reader, a command).
using ChangeHandler = void (*)(Session&, const SettingDef&);

struct SettingDef {
  std::string_view key;
  SettingForm form;
  std::variant<int WindowState::*, bool WindowState::*, std::string WindowState::*> control;
  std::string_view partner = {};  // the other option button of a pair
  ChangeHandler on_change = nullptr;
};

// The 91 rows in the order they are written ("Stat1File3" stands twice; "Stat2File3" never).
std::span<const SettingDef> SettingsTable();
// The first row with this key (exact, case-sensitive); nullptr for an unknown key.
const SettingDef* FindSetting(std::string_view key);

// The value as the file stores it (paths cut by the length of BaseDirectory).
std::string StoredValue(const Session& session, const SettingDef& def);
// The value as a user sees it: 0/1, True/False, texts and whole paths.
std::string DisplayValue(const Session& session, const SettingDef& def);

enum class ValueSource { kSettingsFile, kUser };
// Sets a control from text. From the settings file the stored forms are read (a check as a whole
// number, an option as True/False or a number, a path with BaseDirectory put in front); from the
// user 0/1, True/False and whole texts. A change runs the control's change handler, and an option
// set True clears its partner. False (control unchanged) when the text does not fit the form.
bool SetSetting(Session& session, const SettingDef& def, std::string_view text, ValueSource source);

// Why SetSetting would refuse the text, or why the settings file could not keep it as typed; empty
// when it fits. Changes nothing.
std::string SettingValueProblem(const SettingDef& def, std::string_view text);
bool SettingValueFits(const SettingDef& def, std::string_view text);
// Why a text cannot be written to the settings file so that it reads back unchanged; empty when
// it can (texts holding a comma or blanks at their ends are written in quotes).
std::string StoredTextProblem(std::string_view text);
// Why a folder cannot be taken (a line break or another control character); empty when it can.
std::string PathTextProblem(std::string_view text);
// The first text setting that cannot be saved as typed, with the reason; empty when all can.
std::string UnstorableSetting(const Session& session);

// Assigns a check box and runs its handler when the value changed.
void SetCheck(Session& session, std::string_view key, int value);

void LoadINI(Session& session);
// False when a check refused the save or the file could not be written; a message says which.
bool SaveToINI_Click(Session& session);
void SaveSettings_Click(Session& session);
void SaveSettings2_Click(Session& session);
void RetryNumber_Change(Session& session);
// A largest download that is no whole number of MiB from 1 on goes back to 64, with a message.
void MaxDownloadMB_Change(Session& session);
void LoadConfiguration_Click(Session& session);

// Writes the 91 lines without the user-name guard (a new installation's defaults). False when the
// file could not be written; the old file then stays as it was.
bool WriteSettingsFile(Session& session);
std::string SettingsFilePath(const Session& session);

}  // namespace corvanet
