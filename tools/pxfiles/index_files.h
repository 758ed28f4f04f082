#pragma once
// The three index files of a MetaStock folder, held as their file images: MASTER and EMASTER list
// the first 255 securities, XMASTER those beyond. Everything is checked when read, so a truncated
// or foreign file is refused before anything is written.
#include <array>
#include <string>
#include <string_view>

#include "pxfiles/index_records.h"

namespace corvanet::pxfiles {

struct Placement {
  unsigned file_number = 0;
  bool added = false;         // a new record, not one of the same symbol
  std::size_t name_room = 0;  // the longest name the record keeps
};

class IndexFiles {
 public:
  // Reads MASTER, EMASTER and XMASTER of `folder`; missing ones are empty. False with `error`
  // when one is truncated, its count disagrees with its size, or its records make no sense.
  bool Load(const std::string& folder, std::string& error);

  // The file number of the security stored under `symbol` (as stored: at most kSymbolLength
  // characters); 0 when the index has none.
  unsigned FileNumberOf(std::string_view symbol) const;

  // Puts the security's fields into the records of its symbol, or into new ones under the next
  // free file number. Only the images change; Save writes them. False when no number is left.
  bool Record(const SecurityFields& security, Placement& placement, std::string& error);

  // Replaces the changed index files: EMASTER before MASTER, so MASTER never names a security
  // that EMASTER lacks (an EMASTER record MASTER does not name is dropped on the next Save).
  bool Save(std::string& error);

 private:
  bool CheckMaster(std::string& error);
  bool CheckEmaster(std::string& error);
  bool CheckXmaster(std::string& error);
  bool AddMaster(const SecurityFields& security, Placement& placement);
  bool AddXmaster(const SecurityFields& security, Placement& placement, std::string& error);
  void UpdateHeaders();
  std::string RebuiltEmaster() const;

  std::string folder_;
  std::string master_;
  std::string emaster_;
  std::string xmaster_;
  // Offset of each MASTER file number's record in emaster_ (0: none).
  std::array<std::size_t, kMasterFileLimit + 1> emaster_at_{};
  bool master_changed_ = false;
  bool xmaster_changed_ = false;
};

}  // namespace corvanet::pxfiles
