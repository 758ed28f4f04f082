// The one definition of the settings file's keys, forms and controls.
#include "core/app/settings.h"
#include "core/lists/masterfile.h"
#include "core/pricefiles/price_folders.h"
#include "core/stats/statistic_catalogue.h"
#include "core/ui/tabs.h"

namespace corvanet {

namespace {

using W = WindowState;
using F = SettingForm;

// Most controls' handlers need only the session.
template <void (*Handler)(Session&)>
void Call(Session& s, const SettingDef&) {
  Handler(s);
}
void OnStatistic(Session& s, const SettingDef& def) {
  StatisticBox_Click(s, def.key);
}

// A control without a handler only stores its value.
constexpr SettingDef Check(std::string_view key, int W::*control, ChangeHandler h = nullptr) {
  return {key, F::kCheck, control, {}, h};
}
constexpr SettingDef Option(std::string_view key, bool W::*control, std::string_view partner) {
  return {key, F::kOption, control, partner, nullptr};
}
constexpr SettingDef Text(std::string_view key, std::string W::*control,
                          ChangeHandler h = nullptr) {
  return {key, F::kText, control, {}, h};
}
constexpr SettingDef Path(std::string_view key, std::string W::*control) {
  return {key, F::kPath, control, {}, nullptr};
}

const SettingDef kSettings[] = {
    Check("Plus", &W::DataSetPlus, &Call<SelectMasterfile>),
    Check("AllUS", &W::DataSetAllUS, &Call<SelectMasterfile>),
    Path("PathToDataFiles", &W::PathToDataFiles),
    Path("PathToLists", &W::PathToLists),
    Check("ImplementSpecialFunctions", &W::ImplementSpecialFunctions,
          &Call<ImplementSpecialFunctions_Click>),
    Path("PathToMSPxFiles", &W::PathToMSPxFiles),
    Text("UserName", &W::UserName),
    Text("Password", &W::Password),
    Text("RetryNumber", &W::RetryNumber, &Call<RetryNumber_Change>),
    Option("DownloadCompleteMessageYes", &W::DownloadCompleteMessageYes,
           "DownloadCompleteMessageNo"),
    Option("DownloadCompleteMessageNo", &W::DownloadCompleteMessageNo,
           "DownloadCompleteMessageYes"),
    Option("SystemMessagesYes", &W::SystemMessagesYes, "SystemMessagesNo"),
    Option("SystemMessagesNo", &W::SystemMessagesNo, "SystemMessagesYes"),
    Text("IPAddress", &W::IPAddress),
    Check("UpTrends", &W::UpTrends, &OnStatistic),
    Check("NewUpTrends", &W::NewUpTrends, &OnStatistic),
    Check("DownTrends", &W::DownTrends, &OnStatistic),
    Check("NewDownTrends", &W::NewDownTrends, &OnStatistic),
    Check("Advances", &W::Advances, &OnStatistic),
    Check("Declines", &W::Declines, &OnStatistic),
    Check("Unchanged", &W::Unchanged, &OnStatistic),
    Check("Traded", &W::Traded, &OnStatistic),
    Check("UpVolume", &W::UpVolume, &OnStatistic),
    Check("DownVolume", &W::DownVolume, &OnStatistic),
    Check("TotalVolume", &W::TotalVolume, &OnStatistic),
    Check("NewHighs", &W::NewHighs, &OnStatistic),
    Check("NewHighs1stDay", &W::NewHighs1stDay, &OnStatistic),
    Check("NewLows", &W::NewLows, &OnStatistic),
    Check("NewLows1stDay", &W::NewLows1stDay, &OnStatistic),
    Check("QNewHighs", &W::QNewHighs, &OnStatistic),
    Check("QNewHighs1stDay", &W::QNewHighs1stDay, &OnStatistic),
    Check("QNewLows", &W::QNewLows, &OnStatistic),
    Check("QNewLows1stDay", &W::QNewLows1stDay, &OnStatistic),
    Check("Above200ma", &W::Above200ma, &OnStatistic),
    Check("Below200ma", &W::Below200ma, &OnStatistic),
    Check("Equal200ma", &W::Equal200ma, &OnStatistic),
    Check("Above30ma", &W::Above30ma, &OnStatistic),
    Check("Below30ma", &W::Below30ma, &OnStatistic),
    Check("Equal30ma", &W::Equal30ma, &OnStatistic),
    Check("Above18ma", &W::Above18ma, &OnStatistic),
    Check("Below18ma", &W::Below18ma, &OnStatistic),
    Check("Equal18ma", &W::Equal18ma, &OnStatistic),
    Check("Above9ma", &W::Above9ma, &OnStatistic),
    Check("Below9ma", &W::Below9ma, &OnStatistic),
    Check("Equal9ma", &W::Equal9ma, &OnStatistic),
    Check("Above4ma", &W::Above4ma, &OnStatistic),
    Check("Below4ma", &W::Below4ma, &OnStatistic),
    Check("Equal4ma", &W::Equal4ma, &OnStatistic),
    Check("RunWithList1", &W::RunWithList1),
    Check("RunWithList2", &W::RunWithList2),
    Check("RunWithList3", &W::RunWithList3),
    Check("RunWithList4", &W::RunWithList4),
    Check("RunWithList5", &W::RunWithList5),
    Check("RunWithAllDaily", &W::RunWithAllDaily),
    Check("RunWithAllPeriods", &W::RunWithAllPeriods),
    Option("StatPeriodFileName", &W::StatPeriodFileName, "PeriodStatFilename"),
    Option("PeriodStatFilename", &W::PeriodStatFilename, "StatPeriodFileName"),
    Text("MaxFilenameLength", &W::MaxFilenameLength),
    Check("MakeMetaStockPxFiles", &W::MakeMetaStockPxFiles),
    Check("OHLCVV", &W::OHLCVV, &Call<OHLCVV_Click>),
    Check("EqWtOHLCVV", &W::EqWtOHLCVV, &Call<EqWtOHLCVV_Click>),
    Check("UserDefFile1", &W::UserDefFile1, &Call<UserDefFile1_Click>),
    Check("UserDefFile2", &W::UserDefFile2, &Call<UserDefFile2_Click>),
    Check("UserDefFile3", &W::UserDefFile3, &Call<UserDefFile3_Click>),
    Check("DoNotMakeMetaStockFormat", &W::DoNotMakeMetaStockFormat),
    Text("Stat1File1", &W::Stat1File1),
    Text("Stat2File1", &W::Stat2File1),
    Text("Stat3File1", &W::Stat3File1),
    Text("Stat4File1", &W::Stat4File1),
    Text("Stat5File1", &W::Stat5File1),
    Text("Stat6File1", &W::Stat6File1),
    Text("Stat1File2", &W::Stat1File2),
    Text("Stat2File2", &W::Stat2File2),
    Text("Stat3File2", &W::Stat3File2),
    Text("Stat4File2", &W::Stat4File2),
    Text("Stat5File2", &W::Stat5File2),
    Text("Stat6File2", &W::Stat6File2),
    // The second column of user file 3 is never stored: its line carries Stat1File3 again.
    Text("Stat1File3", &W::Stat1File3),
    Text("Stat1File3", &W::Stat1File3),
    Text("Stat3File3", &W::Stat3File3),
    Text("Stat4File3", &W::Stat4File3),
    Text("Stat5File3", &W::Stat5File3),
    Text("Stat6File3", &W::Stat6File3),
    Option("DateFormatYYYYMMDD", &W::DateFormatYYYYMMDD, "DateFormatMMDDYYYY"),
    Option("DateFormatMMDDYYYY", &W::DateFormatMMDDYYYY, "DateFormatYYYYMMDD"),
    Text("ReplaceZeroValues", &W::ReplaceZeroValues),
    Check("AllDailyForceFull", &W::AllDailyForceFull),
    Check("AllPeriodsForceFull", &W::AllPeriodsForceFull),
    Check("AutoCreateOneStatFiles", &W::AutoCreateOneStatFiles),
    // Added after the first 89 lines, so a file written before them still reads line for line;
    // such a file leaves them at their design values.
    Text("CAFile", &W::CAFile),
    Text("MaxDownloadMB", &W::MaxDownloadMB, &Call<MaxDownloadMB_Change>),
};

static_assert(std::size(kSettings) == 91, "the settings file has 91 lines");

}  // namespace

std::span<const SettingDef> SettingsTable() {
  return kSettings;
}

const SettingDef* FindSetting(std::string_view key) {
  for (const SettingDef& def : kSettings) {
    if (def.key == key) return &def;
  }
  return nullptr;
}

}  // namespace corvanet
