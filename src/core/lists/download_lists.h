#pragma once
// The seven download lists: selecting, restoring and saving their files.
#include <string>

#include "core/app/session.h"
#include "core/platform/field_reader.h"

namespace corvanet {

// The number in CurrentListNumber (0 when none or not a number).
int CurrentListNumber(const Session& session);
// "Download List 3", "'All Daily' Periods", "'All Periods'".
std::string DownLoadType(const Session& session);
// PathToLists + "Download" + n + ".csv".
std::string DownloadListPath(const Session& session, int list_number);

// DownloadList1_Click ... DownloadList7_Click.
void DownloadList_Click(Session& session, int list_number);
void LoadDownloadFile_Click(Session& session);
void SaveDownloadList_Click(Session& session);

// Opens the issue source of the current list, positioned at its first issue: the list file past
// its five header records for lists 1-5, the master file for lists 6 and 7.
bool OpenDownloadList(Session& session, FieldReader& reader);

}  // namespace corvanet
