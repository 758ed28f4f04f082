#include "pxfiles/index_files.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "pxfiles/file_io.h"

namespace corvanet::pxfiles {

namespace {

constexpr const char* kMaster = "MASTER";
constexpr const char* kEmaster = "EMASTER";
constexpr const char* kXmaster = "XMASTER";

std::size_t Records(const std::string& image, std::size_t record_size) {
  return image.empty() ? 0 : image.size() / record_size - 1;
}

// Reads one index file into `image` (empty when missing) and checks that it is whole records
// whose count the header states.
bool ReadIndex(const std::string& folder, const char* name, std::size_t record_size,
               std::size_t max_records, unsigned (*count)(const char*), std::string& image,
               std::string& error) {
  const std::string path = JoinPath(folder, name);
  switch (ReadSmallFile(path, (max_records + 1) * record_size, image, error)) {
    case ReadResult::kMissing:
      image.clear();
      return true;
    case ReadResult::kFailed:
      return false;
    case ReadResult::kRead:
      break;
  }
  if (image.size() < record_size || image.size() % record_size != 0) {
    error = path + " is truncated: " + std::to_string(image.size()) +
            " bytes are not a header and whole " + std::to_string(record_size) + "-byte records";
    return false;
  }
  if (count != nullptr && count(image.data()) != Records(image, record_size)) {
    error = path + " is damaged: its header counts " + std::to_string(count(image.data())) +
            " securities, its size " + std::to_string(Records(image, record_size));
    return false;
  }
  return true;
}

bool Fail(std::string& error, std::string text) {
  error = std::move(text);
  return false;
}

std::string Garbled(const std::string& folder, const char* name, std::size_t record,
                    const std::string& what) {
  return JoinPath(folder, name) + " is damaged: record " + std::to_string(record) + " " + what;
}

}  // namespace

bool IndexFiles::Load(const std::string& folder, std::string& error) {
  folder_ = folder;
  return ReadIndex(folder, kMaster, kMasterRecordSize, kMasterFileLimit, MasterCount, master_,
                   error) &&
         ReadIndex(folder, kEmaster, kEmasterRecordSize, kMasterFileLimit, EmasterCount, emaster_,
                   error) &&
         ReadIndex(folder, kXmaster, kXmasterRecordSize, kXmasterFileLimit, nullptr, xmaster_,
                   error) &&
         CheckEmaster(error) && CheckMaster(error) && CheckXmaster(error);
}

bool IndexFiles::CheckEmaster(std::string& error) {
  for (std::size_t i = 1; i <= Records(emaster_, kEmasterRecordSize); ++i) {
    const char* record = emaster_.data() + i * kEmasterRecordSize;
    const unsigned number = EmasterFileNumber(record);
    if (number == 0) return Fail(error, Garbled(folder_, kEmaster, i, "has no file number"));
    if (emaster_at_[number] != 0) {
      return Fail(error, Garbled(folder_, kEmaster, i, "repeats F" + std::to_string(number)));
    }
    emaster_at_[number] = i * kEmasterRecordSize;
  }
  return true;
}

bool IndexFiles::CheckMaster(std::string& error) {
  std::array<bool, kMasterFileLimit + 1> seen{};
  for (std::size_t i = 1; i <= Records(master_, kMasterRecordSize); ++i) {
    const char* record = master_.data() + i * kMasterRecordSize;
    const unsigned number = MasterFileNumber(record);
    const unsigned fields = MasterFieldCount(record);
    if (number == 0) return Fail(error, Garbled(folder_, kMaster, i, "has no file number"));
    if (seen[number]) {
      return Fail(error, Garbled(folder_, kMaster, i, "repeats F" + std::to_string(number)));
    }
    seen[number] = true;
    if (fields < 5 || fields > 8 || MasterRecordLength(record) != 4 * fields) {
      return Fail(error, Garbled(folder_, kMaster, i, "is no security record"));
    }
    if (emaster_at_[number] == 0) {
      error = JoinPath(folder_, kEmaster) +
              (emaster_.empty() ? " is missing beside MASTER"
                                : " is damaged: it has no record for " + DataFileName(number));
      return false;
    }
  }
  return true;
}

bool IndexFiles::CheckXmaster(std::string& error) {
  if (xmaster_.empty()) return true;
  if (!IsXmasterHeader(xmaster_.data()) ||
      XmasterCount(xmaster_.data()) != Records(xmaster_, kXmasterRecordSize)) {
    error = JoinPath(folder_, kXmaster) + " is damaged: its header does not describe it";
    return false;
  }
  std::vector<bool> seen(kXmasterFileLimit + 1);
  for (std::size_t i = 1; i <= Records(xmaster_, kXmasterRecordSize); ++i) {
    const unsigned number = XmasterFileNumber(xmaster_.data() + i * kXmasterRecordSize);
    if (number <= kMasterFileLimit || seen[number]) {
      error = Garbled(folder_, kXmaster, i, "has file number " + std::to_string(number));
      return false;
    }
    seen[number] = true;
  }
  return true;
}

unsigned IndexFiles::FileNumberOf(std::string_view symbol) const {
  for (std::size_t i = 1; i <= Records(master_, kMasterRecordSize); ++i) {
    const char* record = master_.data() + i * kMasterRecordSize;
    if (MasterSymbol(record) == symbol) return MasterFileNumber(record);
  }
  for (std::size_t i = 1; i <= Records(xmaster_, kXmasterRecordSize); ++i) {
    const char* record = xmaster_.data() + i * kXmasterRecordSize;
    if (XmasterSymbol(record) == symbol) return XmasterFileNumber(record);
  }
  return 0;
}

bool IndexFiles::Record(const SecurityFields& security, Placement& placement, std::string& error) {
  placement = Placement{};
  for (std::size_t i = 1; i <= Records(master_, kMasterRecordSize); ++i) {
    char* record = master_.data() + i * kMasterRecordSize;
    if (MasterSymbol(record) != security.symbol) continue;
    placement.file_number = MasterFileNumber(record);
    placement.name_room = kEmasterNameLength;
    WriteMasterRecord(record, placement.file_number, security);
    WriteEmasterRecord(emaster_.data() + emaster_at_[placement.file_number], placement.file_number,
                       security);
    master_changed_ = true;
    return true;
  }
  for (std::size_t i = 1; i <= Records(xmaster_, kXmasterRecordSize); ++i) {
    char* record = xmaster_.data() + i * kXmasterRecordSize;
    if (XmasterSymbol(record) != security.symbol) continue;
    placement.file_number = XmasterFileNumber(record);
    placement.name_room = kXmasterNameLength;
    WriteXmasterRecord(record, placement.file_number, security);
    xmaster_changed_ = true;
    return true;
  }
  placement.added = true;
  if (Records(master_, kMasterRecordSize) < kMasterFileLimit) {
    return AddMaster(security, placement);
  }
  return AddXmaster(security, placement, error);
}

bool IndexFiles::AddMaster(const SecurityFields& security, Placement& placement) {
  std::array<bool, kMasterFileLimit + 1> used{};
  for (std::size_t i = 1; i <= Records(master_, kMasterRecordSize); ++i) {
    used[MasterFileNumber(master_.data() + i * kMasterRecordSize)] = true;
  }
  // There are fewer than 255 records, so a number is free.
  unsigned number = 1;
  while (used[number]) ++number;
  if (master_.empty()) master_.assign(kMasterRecordSize, '\0');
  master_.resize(master_.size() + kMasterRecordSize);
  char* record = master_.data() + master_.size() - kMasterRecordSize;
  StartMasterRecord(record);
  WriteMasterRecord(record, number, security);
  // An EMASTER record a killed run left for this number is taken over.
  if (emaster_at_[number] == 0) {
    if (emaster_.empty()) emaster_.assign(kEmasterRecordSize, '\0');
    emaster_at_[number] = emaster_.size();
    emaster_.resize(emaster_.size() + kEmasterRecordSize);
  }
  StartEmasterRecord(emaster_.data() + emaster_at_[number]);
  WriteEmasterRecord(emaster_.data() + emaster_at_[number], number, security);
  placement.file_number = number;
  placement.name_room = kEmasterNameLength;
  master_changed_ = true;
  return true;
}

bool IndexFiles::AddXmaster(const SecurityFields& security, Placement& placement,
                            std::string& error) {
  if (xmaster_.empty()) {
    xmaster_.assign(kXmasterRecordSize, '\0');
    StartXmasterHeader(xmaster_.data());
  }
  unsigned highest = kMasterFileLimit;
  for (std::size_t i = 1; i <= Records(xmaster_, kXmasterRecordSize); ++i) {
    highest = std::max(highest, XmasterFileNumber(xmaster_.data() + i * kXmasterRecordSize));
  }
  if (highest >= kXmasterFileLimit) {
    error = "the folder has no free file number left";
    return false;
  }
  xmaster_.resize(xmaster_.size() + kXmasterRecordSize);
  char* record = xmaster_.data() + xmaster_.size() - kXmasterRecordSize;
  StartXmasterRecord(record);
  WriteXmasterRecord(record, highest + 1, security);
  placement.file_number = highest + 1;
  placement.name_room = kXmasterNameLength;
  xmaster_changed_ = true;
  return true;
}

void IndexFiles::UpdateHeaders() {
  if (master_changed_) {
    unsigned highest = 0;
    const std::size_t count = Records(master_, kMasterRecordSize);
    for (std::size_t i = 1; i <= count; ++i) {
      highest = std::max(highest, MasterFileNumber(master_.data() + i * kMasterRecordSize));
    }
    WriteMasterHeader(master_.data(), static_cast<unsigned>(count), highest);
  }
  if (xmaster_changed_) {
    unsigned highest = kMasterFileLimit;
    const std::size_t count = Records(xmaster_, kXmasterRecordSize);
    for (std::size_t i = 1; i <= count; ++i) {
      highest = std::max(highest, XmasterFileNumber(xmaster_.data() + i * kXmasterRecordSize));
    }
    WriteXmasterHeader(xmaster_.data(), static_cast<unsigned>(count), highest + 1);
  }
}

std::string IndexFiles::RebuiltEmaster() const {
  // In MASTER's order and with MASTER's header, so both files list the same securities.
  const std::size_t count = Records(master_, kMasterRecordSize);
  std::string image((count + 1) * kEmasterRecordSize, '\0');
  std::copy_n(master_.data(), kMasterRecordSize, image.data());
  for (std::size_t i = 1; i <= count; ++i) {
    const std::size_t at = emaster_at_[MasterFileNumber(master_.data() + i * kMasterRecordSize)];
    std::copy_n(emaster_.data() + at, kEmasterRecordSize, image.data() + i * kEmasterRecordSize);
  }
  return image;
}

bool IndexFiles::Save(std::string& error) {
  UpdateHeaders();
  if (master_changed_ && (!ReplaceFile(JoinPath(folder_, kEmaster), RebuiltEmaster(), error) ||
                          !ReplaceFile(JoinPath(folder_, kMaster), master_, error))) {
    return false;
  }
  return !xmaster_changed_ || ReplaceFile(JoinPath(folder_, kXmaster), xmaster_, error);
}

}  // namespace corvanet::pxfiles
