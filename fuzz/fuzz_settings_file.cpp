// Rondex.ini as a user's editor or a damaged disk may leave it. Whatever it holds, what the program
// then saves must read back to the same controls.
#include <cstdlib>

#include "core/app/settings.h"
#include "core/platform/files.h"
#include "fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace corvanet;
  static fuzz::ScratchSession first;
  static fuzz::ScratchSession second;
  WriteWholeFile(SettingsFilePath(first.session), fuzz::AsText(data, size));
  LoadINI(first.session);
  if (!UnstorableSetting(first.session).empty() || !WriteSettingsFile(first.session)) return 0;
  LoadINI(second.session);
  for (const SettingDef& def : SettingsTable()) {
    if (DisplayValue(first.session, def) != DisplayValue(second.session, def)) std::abort();
  }
  return 0;
}
