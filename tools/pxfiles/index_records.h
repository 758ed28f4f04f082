#pragma once
// The records of the three index files: where each field lies, and the writing of one security's
// fields into them. Only the fields this converter owns are written; other bytes of an existing
// record (another writer's chart flag or version) are kept.
#include <cstddef>
#include <string>
#include <string_view>

namespace corvanet::pxfiles {

inline constexpr std::size_t kMasterRecordSize = 53;
inline constexpr std::size_t kEmasterRecordSize = 192;
inline constexpr std::size_t kXmasterRecordSize = 150;
// MASTER and EMASTER hold file numbers 1-255; XMASTER those above.
inline constexpr unsigned kMasterFileLimit = 255;
inline constexpr unsigned kXmasterFileLimit = 0xFFFF;

inline constexpr std::size_t kSymbolLength = 14;
// The longest name each index keeps (MASTER's own field holds only the first 16 characters).
inline constexpr std::size_t kEmasterNameLength = 52;
inline constexpr std::size_t kXmasterNameLength = 45;

struct SecurityFields {
  std::string_view symbol;  // at most kSymbolLength
  std::string_view name;    // cut by each field to its width
  char period = 'D';
  int first_date = 0;  // YYYYMMDD
  int last_date = 0;
};

// The data file of a file number: F<n>.DAT in MASTER's range, F<n>.MWD above it.
std::string DataFileName(unsigned file_number);

// A record added for a new security, before its fields are written.
void StartMasterRecord(char* record);
void StartEmasterRecord(char* record);
void StartXmasterRecord(char* record);

void WriteMasterRecord(char* record, unsigned file_number, const SecurityFields& security);
void WriteEmasterRecord(char* record, unsigned file_number, const SecurityFields& security);
void WriteXmasterRecord(char* record, unsigned file_number, const SecurityFields& security);

// The header counts. MASTER's header also opens EMASTER's.
void WriteMasterHeader(char* header, unsigned count, unsigned highest_file_number);
void StartXmasterHeader(char* header);
void WriteXmasterHeader(char* header, unsigned count, unsigned next_file_number);

unsigned MasterCount(const char* header);
unsigned EmasterCount(const char* header);
unsigned XmasterCount(const char* header);
bool IsXmasterHeader(const char* header);

unsigned MasterFileNumber(const char* record);
unsigned EmasterFileNumber(const char* record);
unsigned XmasterFileNumber(const char* record);
// Field count and data record length as MASTER states them.
unsigned MasterFieldCount(const char* record);
unsigned MasterRecordLength(const char* record);
std::string_view MasterSymbol(const char* record);
std::string_view XmasterSymbol(const char* record);

}  // namespace corvanet::pxfiles
