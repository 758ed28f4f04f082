#pragma once
// What tells one version of a file from another without reading it. Writing to a file changes its
// size or times, replacing it gives another inode, and the change time cannot be set back by
// anyone: two equal identities are one unchanged file.
#include <cstdint>
#include <optional>
#include <string>

namespace corvanet {

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
