#pragma once
// The writer every whole-file write goes through: the content goes to a temporary file in the
// target's folder that is renamed over the target only when everything was written, so a failure
// (or a killed process) leaves the old file. Lines the program writes end in CR LF.
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace corvanet {

inline constexpr std::string_view kLineEnd = "\r\n";

enum class FileAccess { kNormal, kOwnerOnly };

// Opens a file for writing, created with the owner-only mode from the start when asked, so no other
// user can open it in the moment before its mode is narrowed. `exclusive`: only a new file, never
// one already under the name; otherwise one to append to. Null on failure (errno tells why).
std::FILE* OpenForWriting(const std::string& path, FileAccess access, bool exclusive);

class AtomicFileWriter {
 public:
  AtomicFileWriter() = default;
  explicit AtomicFileWriter(std::string target, FileAccess access = FileAccess::kNormal) {
    Open(std::move(target), access);
  }
  AtomicFileWriter(const AtomicFileWriter&) = delete;
  AtomicFileWriter& operator=(const AtomicFileWriter&) = delete;
  AtomicFileWriter(AtomicFileWriter&& other) noexcept;
  AtomicFileWriter& operator=(AtomicFileWriter&& other) noexcept;
  // Without Commit the temporary file is removed and the target left as it was.
  ~AtomicFileWriter();

  // Creates the temporary file; false when the folder is missing or not writable.
  bool Open(std::string target, FileAccess access = FileAccess::kNormal);
  bool is_open() const { return file_ != nullptr; }
  void Write(std::string_view text);
  void WriteLine(std::string_view text) {
    Write(text);
    Write(kLineEnd);
  }
  // Writes `length` bytes of the open file `descriptor`, from its byte `offset` on: copied by the
  // system where it can, without passing through this process. A source shorter than that fails
  // the writer.
  void CopyFrom(int descriptor, std::uint64_t offset, std::uint64_t length);
  // Flushes, closes and renames over the target. False (target untouched) on any write error.
  bool Commit();
  void Discard();
  const std::string& target() const { return target_; }
  // The error text of the first failure, for log lines.
  const std::string& error() const { return error_; }

 private:
  std::FILE* file_ = nullptr;
  // Kept from one Open to the next, so a writer reused for many files allocates it once.
  std::unique_ptr<char[]> buffer_;
  std::string target_;
  std::string temp_;
  std::string error_;
  void Fail(std::string error);

  bool failed_ = false;
  bool locked_ = false;  // whether the writer takes the lock on its temporary file (see the .cpp)
};

// True for the names AtomicFileWriter gives its temporary files.
bool IsTemporaryFileName(std::string_view name);
// Removes the temporary files a dead process left in `folder`: those with the names
// AtomicFileWriter gives, that no living writer holds (a writer locks its file until it commits or
// discards it, unless its process holds the run lock) and that this process did not name. To be
// called only while holding the run lock. Returns how many were removed.
int RemoveStaleTemporaryFiles(const std::string& folder);

}  // namespace corvanet
