#pragma once
// Writes a file's new content line by line and touches the disk only as far as the content
// changed. A run merges every datafile of a list, and on most days each one either comes out the
// same (a week or month that has not closed) or gains a row at its end; replacing each whole
// through a temporary file cost several times a plain copy of the folders, most of it the kernel
// allocating the new file's blocks and freeing the old one's.
//
// - New content equal to the old leaves the file untouched.
// - New content that starts with the whole old content gets the rest appended with one write
//   that stays within one page of the file, which the kernel copies whole or not at all even
//   when the process is killed; a failed append is cut back to the old length. A file with other
//   names (hard links) is not written in place.
// - Anything else (a revised row, a shorter file, a longer tail) replaces the file through an
//   AtomicFileWriter, so no reader ever sees it half changed.
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "core/platform/deferred_release.h"
#include "core/platform/file_access.h"
#include "core/platform/files.h"

namespace corvanet {

class FileRewriter {
 public:
  enum class Change { kNone, kAppended, kReplaced };

  FileRewriter() = default;
  // Without Commit the target stays as it was.
  ~FileRewriter() { Discard(); }
  FileRewriter(const FileRewriter&) = delete;
  FileRewriter& operator=(const FileRewriter&) = delete;

  // False when there is no target yet and its folder cannot take a new file.
  bool Open(std::string target);
  // The target as it was when opened; nullopt when there was none or it cannot be told.
  const std::optional<FileIdentity>& old_identity() const { return old_identity_; }
  // The last line of the target as it was opened (as LastLineOf gives it): from the open old copy,
  // or by its path when it could not be opened as one (a link, say, or no file at all).
  std::string LastLineOfOld() const;
  // Takes the first `bytes` of the old content as written, unread: the caller knows they are what
  // it would write. Only before anything is written, and only within the old content.
  bool TakeAsWritten(std::uint64_t bytes);
  void Write(std::string_view text);
  void WriteLine(std::string_view text) {
    Write(text);
    Write(kLineEnd);
  }
  // Brings the target to the content written. False, the target as it was, on any error.
  bool Commit();
  void Discard();

  // Whether all written so far repeats the old content, which goes on at least as far.
  bool RepeatsOldContent() const { return mode_ == Mode::kComparing; }
  // The bytes of the new content so far, those taken as written included.
  std::uint64_t size() const { return size_; }
  // How the last successful Commit changed the target, and the target as it then was (until the
  // next Open).
  Change change() const { return change_; }
  const std::optional<FileIdentity>& identity() const { return identity_; }
  const std::string& target() const { return target_; }
  // The error text of the first failure, for log lines.
  const std::string& error() const { return error_; }

 private:
  enum class Mode { kClosed, kComparing, kAppending, kReplacing, kFailed };

  void Compare(std::string_view& text);
  bool ReadMoreOfTheOld();
  bool TailFitsInOnePage() const;
  void StartReplacing();
  bool Append();
  bool Replace();
  void Fail(std::string error);
  void CloseOld();

  Mode mode_ = Mode::kClosed;
  std::string target_;
  std::string error_;
  Change change_ = Change::kNone;
  int old_file_ = -1;
  std::optional<FileIdentity> old_identity_;
  std::optional<FileIdentity> identity_;
  std::uint64_t size_ = 0;
  // Bytes of the old content the new content has repeated so far; once the old content has ended,
  // its whole length.
  std::uint64_t matched_ = 0;
  // Read ahead from the old content and not yet compared; kept from one Open to the next.
  std::unique_ptr<char[]> old_buffer_;
  std::size_t old_begin_ = 0;
  std::size_t old_end_ = 0;
  // What the last read of the old content brought into old_buffer_, compared or not, and from
  // where: when it reaches the old content's end, its last line is found there without a read.
  std::uint64_t read_offset_ = 0;
  std::size_t read_size_ = 0;
  std::string tail_;  // the new bytes past the old content, while appending
  AtomicFileWriter replacement_;
  DeferredRelease old_copies_;
};

}  // namespace corvanet
