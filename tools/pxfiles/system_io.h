#pragma once
// The converter's system calls, written once per system (system_io_posix.cpp,
// system_io_win32.cpp) and chosen when it is built. Descriptors are the C library's; paths are
// UTF-8; a failure sets errno, which SystemError() tells.
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <optional>
#include <string>

namespace corvanet::pxfiles::system {

// -1 on failure.
int OpenForReading(const std::string& path);
// Only a file that does not exist yet.
int CreateNew(const std::string& path);
int OpenForAppending(const std::string& path);
// Bytes read (0 at the end) or written; -1 on failure.
long Read(int descriptor, char* into, std::size_t size);
long Write(int descriptor, const char* from, std::size_t size);
bool Close(int descriptor);
// The size of an open regular file; nullopt for anything else.
std::optional<std::uint64_t> RegularFileSize(int descriptor);
std::optional<std::uint64_t> RegularFileSize(const std::string& path);
bool IsFolder(const std::string& path);
bool MakeFolder(const std::string& path);
// Renames `from` over `to` in one step.
bool ReplaceWith(const std::string& from, const std::string& to);
void Remove(const std::string& path);
long ProcessId();
std::tm LocalTime(std::time_t time);
// A backslash is a separator only where the system takes it as one; elsewhere it may stand in a
// folder's name.
bool IsSeparator(char c);

}  // namespace corvanet::pxfiles::system
