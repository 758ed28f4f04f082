#include "pxfiles/index_records.h"

#include <bit>
#include <cstdint>

#include "pxfiles/bytes.h"
#include "pxfiles/data_file.h"
#include "pxfiles/mbf.h"

namespace corvanet::pxfiles {

namespace {

constexpr unsigned kFileType = 101;
constexpr char kXmasterMark[] = {'\x5D', '\xFE', 'X', 'M'};

std::uint32_t MbfDate(int date) {
  std::uint32_t word = 0;
  ToMbf(CenturyDate(date), word);  // dates of 1900-2999 always fit
  return word;
}

std::uint32_t IeeeDate(int date) {
  return std::bit_cast<std::uint32_t>(static_cast<float>(CenturyDate(date)));
}

}  // namespace

std::string DataFileName(unsigned file_number) {
  return "F" + std::to_string(file_number) + (file_number <= kMasterFileLimit ? ".DAT" : ".MWD");
}

void StartMasterRecord(char* record) {
  PutText(record, kMasterRecordSize, "", '\0');
  record[50] = ' ';
  record[51] = ' ';  // not charted
}

void StartEmasterRecord(char* record) {
  PutText(record, kEmasterRecordSize, "", '\0');
  record[9] = ' ';  // not charted
}

void StartXmasterRecord(char* record) {
  PutText(record, kXmasterRecordSize, "", '\0');
  record[0] = '\x01';
}

void WriteMasterRecord(char* record, unsigned file_number, const SecurityFields& security) {
  PutU8(record, file_number);
  PutU16(record + 1, kFileType);
  PutU8(record + 3, kRecordLength);
  PutU8(record + 4, kFieldCount);
  PutText(record + 7, 16, security.name, ' ');
  PutU32(record + 25, MbfDate(security.first_date));
  PutU32(record + 29, MbfDate(security.last_date));
  record[33] = security.period;
  PutU16(record + 34, 0);  // no intraday time frame
  PutText(record + 36, kSymbolLength, security.symbol, ' ');
}

void WriteEmasterRecord(char* record, unsigned file_number, const SecurityFields& security) {
  PutU8(record + 2, file_number);
  PutU8(record + 6, kFieldCount);
  PutU8(record + 7, kFieldBits);
  PutText(record + 11, kSymbolLength, security.symbol, '\0');
  PutText(record + 32, 16, security.name, '\0');
  record[60] = security.period;
  PutU16(record + 62, 0);
  PutU32(record + 64, IeeeDate(security.first_date));
  PutU32(record + 68, 0);
  PutU32(record + 72, IeeeDate(security.last_date));
  PutText(record + 76, 12, "", '\0');  // times: none in daily data
  PutI32(record + 126, security.first_date);
  PutText(record + 139, kEmasterNameLength, security.name, '\0');
}

void WriteXmasterRecord(char* record, unsigned file_number, const SecurityFields& security) {
  PutText(record + 1, kSymbolLength, security.symbol, '\0');
  PutText(record + 16, kXmasterNameLength, security.name, '\0');
  record[62] = security.period;
  PutU16(record + 63, 0);
  PutU16(record + 65, file_number);
  PutU8(record + 70, kFieldBits);
  PutI32(record + 104, security.last_date);
  PutI32(record + 108, security.first_date);
  PutI32(record + 116, security.last_date);
}

void WriteMasterHeader(char* header, unsigned count, unsigned highest_file_number) {
  PutU16(header, count);
  PutU16(header + 2, highest_file_number);
}

void StartXmasterHeader(char* header) {
  PutText(header, kXmasterRecordSize, std::string_view(kXmasterMark, 4), '\0');
}

void WriteXmasterHeader(char* header, unsigned count, unsigned next_file_number) {
  PutU16(header + 10, count);
  PutU16(header + 14, count);
  PutU16(header + 18, next_file_number);
}

unsigned MasterCount(const char* header) {
  return GetU16(header);
}
unsigned EmasterCount(const char* header) {
  return GetU16(header);
}
unsigned XmasterCount(const char* header) {
  return GetU16(header + 10);
}
bool IsXmasterHeader(const char* header) {
  return std::string_view(header, 4) == std::string_view(kXmasterMark, 4);
}

unsigned MasterFileNumber(const char* record) {
  return GetU8(record);
}
unsigned EmasterFileNumber(const char* record) {
  return GetU8(record + 2);
}
unsigned XmasterFileNumber(const char* record) {
  return GetU16(record + 65);
}
unsigned MasterFieldCount(const char* record) {
  return GetU8(record + 4);
}
unsigned MasterRecordLength(const char* record) {
  return GetU8(record + 3);
}
std::string_view MasterSymbol(const char* record) {
  return GetText(record + 36, kSymbolLength);
}
std::string_view XmasterSymbol(const char* record) {
  return GetText(record + 1, kSymbolLength);
}

}  // namespace corvanet::pxfiles
