#pragma once
// The seven download lists: selecting, restoring and saving their files.
#include <array>
#include <span>
#include <string>
#include <string_view>

#include "core/platform/field_reader.h"
#include "core/state/session.h"

namespace corvanet {

// The vendor options in the order a save tests them: the list file's word ("ORG" for Other), the
// option's caption and the option itself.
struct VendorOption {
  std::string_view word;
  std::string_view caption;
  bool WindowState::*option;
};
std::span<const VendorOption> VendorOptions();
// The first vendor option that is set, in that order; nullptr when none is.
const VendorOption* ChosenVendor(const WindowState& ui);
bool AnyPeriodTicked(const WindowState& ui);
// Whether the log-in is filled in: neither field empty nor left at its initial (placeholder) text.
bool LogInEntered(const WindowState& ui);

// The number in CurrentListNumber (0 when none or not a number).
int CurrentListNumber(const Session& session);
// "All Daily" and "All Periods", which walk the whole master file.
bool IsFullList(int list_number);
// "Download List 3", "'All Daily' Periods", "'All Periods'".
std::string DownLoadType(const Session& session);
// PathToLists + "Download" + n + ".csv".
std::string DownloadListPath(const Session& session, int list_number);

// Which of the four periods (daily, weekly, monthly, quarterly) list `list_number` (1-7) ticks as
// its saved file has them, read without a word: lists 6 and 7 fix their own, a list with no file or
// a shorter header ticks none of the missing ones.
std::array<bool, 4> SavedListPeriods(const Session& session, int list_number);
// Whether the saved file of list `list_number` names a vendor the program knows, as its vendor
// line is read when the list is loaded.
bool SavedListNamesVendor(const Session& session, int list_number);

// DownloadList1_Click ... DownloadList7_Click.
void DownloadList_Click(Session& session, int list_number);
void LoadDownloadFile_Click(Session& session);
// The checks before a list is saved (a list loaded, a period ticked, a vendor chosen); false, after
// a message, when one refuses.
bool DownloadListMayBeSaved(Session& session);
// Once the checks passed: writes the list file from the window (its vendor, its period boxes, its
// items) and recomputes the list buttons; false, after a message, when the file could not be
// written (and without one when no vendor is chosen). The save button is
// SaveDownloadList_Click (app/settings_buttons.h), which saves the settings first.
bool WriteDownloadList(Session& session);
// A user list is loaded and its box holds other items than its file as last read or written.
bool DownloadListUnsaved(const Session& session);

// Opens the issue source of the current list, positioned at its first issue: the list file past
// its five header records for lists 1-5, the master file for lists 6 and 7.
bool OpenDownloadList(Session& session, FieldReader& reader);

}  // namespace corvanet
