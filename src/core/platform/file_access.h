#pragma once
// Files read through descriptors, where a run reads parts of thousands of files and every system
// call counts: opening, reading at an offset (which needs no seek), and telling one version of a
// file from another without reading it.
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace corvanet {

// Opens an existing file with the flags of open(), never waiting on what is not a regular file: a
// FIFO with nobody at its other end would hold open() for ever (and a run with it), a device may
// too. Such a path gives -1 with errno EINVAL, a folder -1 with EISDIR. Every open of a file the
// program reads or writes in place goes through here.
// (POSIX only: a Windows path names no FIFO, and the Windows forms below refuse devices.)
int OpenRegularFile(const std::string& path, int flags, int mode = 0);
// -1 when the file cannot be opened, or is not a regular file.
int OpenForReading(const std::string& path);
void CloseFile(int descriptor);
// Reads up to `size` bytes at `offset`: how many were read (0 at the end), -1 on an error.
long ReadAt(int descriptor, char* into, std::size_t size, std::uint64_t offset);
// The length of an open regular file; nullopt when it cannot be told.
std::optional<std::uint64_t> LengthOf(int descriptor);

// Writing to a file changes its size or times, replacing it gives another inode, and the change
// time cannot be set back by anyone: on a file system that keeps times to the nanosecond, two
// equal identities are one unchanged file. (Where times are coarse, a file replaced within the
// same tick by one of the same size on a reused inode would pass; those who rely on an identity
// also check what they can of the content.)

struct FileIdentity {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  std::uint64_t size = 0;
  std::int64_t modified_ns = 0;
  std::int64_t changed_ns = 0;

  bool operator==(const FileIdentity&) const = default;
};

// nullopt when the file cannot be examined, or where the system does not tell all of the above.
std::optional<FileIdentity> IdentityOf(int descriptor);
std::optional<FileIdentity> IdentityOf(const std::string& path);

}  // namespace corvanet
