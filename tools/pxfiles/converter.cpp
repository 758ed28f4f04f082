#include "pxfiles/converter.h"

#include "pxfiles/file_io.h"
#include "pxfiles/index_files.h"
#include "pxfiles/price_file.h"

namespace corvanet::pxfiles {

bool Convert(const Options& options, Outcome& outcome, std::string& error) {
  PriceFile prices;
  if (!ReadPriceFile(options.price_file, prices, error)) return false;
  outcome.symbol = prices.symbol.substr(0, kSymbolLength);
  if (prices.symbol.size() > kSymbolLength) {
    outcome.notes += "; symbol cut to " + std::to_string(kSymbolLength) + " characters";
  }
  const std::string& folder = options.output_folder;
  IndexFiles index;
  if (!MakeFolders(folder, error) || !index.Load(folder, error)) return false;
  const SecurityFields security{outcome.symbol, prices.name, prices.period, prices.first_date,
                                prices.last_date};
  Placement placement;
  if (!index.Record(security, placement, error)) return false;
  if (prices.name.size() > placement.name_room) {
    outcome.notes += "; name cut to " + std::to_string(placement.name_room) + " characters";
  }
  outcome.bars = prices.data.bars();
  outcome.data_file = DataFileName(placement.file_number);
  return ReplaceFile(JoinPath(folder, outcome.data_file), prices.data.Finish(), error) &&
         index.Save(error);
}

}  // namespace corvanet::pxfiles
