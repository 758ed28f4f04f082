#pragma once
// The folders of the price-file kinds, made when a kind's box is ticked: the writers never make
// folders, so a kind's files can only go where the user switched that kind on.
#include "core/state/session.h"

namespace corvanet {

// PathToDataFiles + "PX" and its four period folders.
void OHLCVV_Click(Session& session);
// PathToDataFiles + "PxEqWt" and its period folders, then PathToMSPxFiles + "EqWtPriceFiles" and
// its period folders.
void EqWtOHLCVV_Click(Session& session);
// "PxFile1" (2, 3) and its period folders, under PathToDataFiles and then under PathToMSPxFiles.
void UserDefFile1_Click(Session& session);
void UserDefFile2_Click(Session& session);
void UserDefFile3_Click(Session& session);

}  // namespace corvanet
