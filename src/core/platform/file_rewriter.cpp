#include "core/platform/file_rewriter.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#ifndef _WIN32
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace corvanet {

namespace {

constexpr std::size_t kOldBuffer = 64 * 1024;

#ifndef _WIN32
std::size_t PageSize() {
  static const std::size_t size = [] {
    const long page = ::sysconf(_SC_PAGESIZE);
    return page > 0 ? static_cast<std::size_t>(page) : std::size_t{4096};
  }();
  return size;
}
#endif

}  // namespace

bool FileRewriter::Open(std::string target) {
  Discard();
  target_ = std::move(target);
  error_.clear();
  change_ = Change::kNone;
  identity_.reset();
  matched_ = size_ = 0;
  old_begin_ = old_end_ = 0;
  read_size_ = 0;
#ifndef _WIN32
  old_file_ = OpenRegularFile(target_, O_RDONLY | O_NOFOLLOW);
#endif
  old_identity_ = IdentityOf(old_file_);
  if (old_file_ < 0) {
    // Nothing to compare with (or nothing that can be read): the content is written whole.
    StartReplacing();
    return mode_ == Mode::kReplacing;
  }
  if (!old_buffer_) old_buffer_ = std::make_unique_for_overwrite<char[]>(kOldBuffer);
  mode_ = Mode::kComparing;
  return true;
}

std::string FileRewriter::LastLineOfOld() const {
  if (!old_identity_) return LastLineOf(target_);
  // A merge compares the new content with the old to its end, so the last read nearly always
  // holds the last line already.
  std::string line;
  if (read_size_ > 0 && read_offset_ + read_size_ == old_identity_->size &&
      LastLineIn({old_buffer_.get(), read_size_}, read_offset_ == 0, line)) {
    return line;
  }
  return LastLineOf(old_file_, old_identity_->size);
}

bool FileRewriter::TakeAsWritten(std::uint64_t bytes) {
  if (mode_ != Mode::kComparing || size_ != 0 || !old_identity_ || bytes > old_identity_->size) {
    return false;
  }
  matched_ = size_ = bytes;
  return true;
}

void FileRewriter::Write(std::string_view text) {
  size_ += text.size();
  while (!text.empty()) {
    switch (mode_) {
      case Mode::kComparing:
        Compare(text);
        break;
      case Mode::kAppending:
        tail_.append(text);
        if (!TailFitsInOnePage()) StartReplacing();
        return;
      case Mode::kReplacing:
        replacement_.Write(text);
        return;
      case Mode::kClosed:
      case Mode::kFailed:
        return;
    }
  }
}

// Consumes from `text` what repeats the old content. At the first difference the file is to be
// replaced; where the old content ends, what follows is to be appended.
void FileRewriter::Compare(std::string_view& text) {
  if (old_begin_ == old_end_ && !ReadMoreOfTheOld()) {
    if (mode_ == Mode::kComparing) mode_ = Mode::kAppending;
    return;
  }
  const std::size_t length = std::min(text.size(), old_end_ - old_begin_);
  const char* old = old_buffer_.get() + old_begin_;
  // Nearly always the whole piece is the same: memcmp says so at memory speed, and only a
  // difference is looked for byte by byte.
  const std::size_t same =
      std::memcmp(text.data(), old, length) == 0
          ? length
          : static_cast<std::size_t>(std::mismatch(text.data(), text.data() + length, old).first -
                                     text.data());
  matched_ += same;
  old_begin_ += same;
  text.remove_prefix(same);
  if (same < length) StartReplacing();
}

// False at the end of the old content, or when it cannot be read (then the rewriter has failed).
bool FileRewriter::ReadMoreOfTheOld() {
  // The old content is the file as it was opened: its end needs no read to be found.
  if (old_identity_ && matched_ >= old_identity_->size) {
    old_begin_ = old_end_ = 0;
    return false;
  }
#ifndef _WIN32
  const long got = ReadAt(old_file_, old_buffer_.get(), kOldBuffer, matched_);
  if (got < 0) {
    Fail(target_ + " cannot be read: " + std::strerror(errno));
    return false;
  }
  old_begin_ = 0;
  old_end_ = static_cast<std::size_t>(got);
  read_offset_ = matched_;
  read_size_ = old_end_;
  return got > 0;
#else
  return false;
#endif
}

bool FileRewriter::TailFitsInOnePage() const {
#ifndef _WIN32
  return matched_ % PageSize() + tail_.size() <= PageSize();
#else
  return false;
#endif
}

// From here on the content goes to a temporary file: first the part of the old content already
// repeated, then whatever was waiting to be appended.
void FileRewriter::StartReplacing() {
  if (!replacement_.Open(target_)) {
    Fail(target_ + ": " + replacement_.error());
    return;
  }
  replacement_.CopyFrom(old_file_, 0, matched_);
  if (!replacement_.error().empty()) {
    Fail(target_ + " cannot be copied: " + replacement_.error());
    return;
  }
  replacement_.Write(tail_);
  tail_.clear();
  old_begin_ = old_end_ = 0;
  mode_ = Mode::kReplacing;
}

bool FileRewriter::Commit() {
  if (mode_ == Mode::kComparing) {
    // All that was written repeats the old content: the file stays as it is unless the old
    // content goes on beyond it.
    if (old_begin_ < old_end_ || ReadMoreOfTheOld()) {
      StartReplacing();
    } else if (mode_ == Mode::kComparing) {
      CloseOld();
      mode_ = Mode::kClosed;
      change_ = Change::kNone;
      identity_ = old_identity_;
      return true;
    }
  }
  if (mode_ == Mode::kAppending) return Append();
  if (mode_ == Mode::kReplacing) return Replace();
  if (error_.empty()) error_ = "nothing was opened";
  Discard();
  return false;
}

bool FileRewriter::Append() {
#ifndef _WIN32
  const int file = OpenRegularFile(target_, O_WRONLY | O_NOFOLLOW);
  struct stat status {};
  if (file < 0 || ::fstat(file, &status) != 0 ||
      static_cast<std::uint64_t>(status.st_size) != matched_ || status.st_nlink != 1) {
    // A file that cannot be written to (or that changed under us) is still replaced whole, and so
    // is one with other names: writing in place would change the file under those names too.
    if (file >= 0) ::close(file);
    StartReplacing();
    return Commit();
  }
  std::size_t written = 0;
  while (written < tail_.size()) {
    const ssize_t put = ::pwrite(file, tail_.data() + written, tail_.size() - written,
                                 static_cast<off_t>(matched_ + written));
    if (put < 0 && errno == EINTR) continue;
    if (put <= 0) {
      error_ = std::strerror(put < 0 ? errno : ENOSPC);
      // What did get written is taken back: the file keeps exactly its old content.
      if (::ftruncate(file, static_cast<off_t>(matched_)) != 0) error_ += "; cutting back failed";
      ::close(file);
      Discard();
      return false;
    }
    written += static_cast<std::size_t>(put);
  }
  identity_ = IdentityOf(file);
  const bool closed = ::close(file) == 0;
  if (!closed) error_ = std::strerror(errno);
  tail_.clear();
  CloseOld();
  mode_ = Mode::kClosed;
  change_ = Change::kAppended;
  return closed;
#else
  return false;
#endif
}

bool FileRewriter::Replace() {
  // The old copy stays open across the rename and is let go on a thread of its own.
  const int old_copy = std::exchange(old_file_, -1);
  const bool committed = replacement_.Commit();
  old_copies_.Release(old_copy);
  mode_ = Mode::kClosed;
  if (!committed) {
    error_ = replacement_.error();
    return false;
  }
  change_ = Change::kReplaced;
  // Taken after the rename, which changes the file's change time on some file systems.
  identity_ = IdentityOf(target_);
  return true;
}

void FileRewriter::Fail(std::string error) {
  if (error_.empty()) error_ = std::move(error);
  replacement_.Discard();
  tail_.clear();
  mode_ = Mode::kFailed;
}

void FileRewriter::Discard() {
  replacement_.Discard();
  CloseOld();
  tail_.clear();
  mode_ = Mode::kClosed;
}

void FileRewriter::CloseOld() {
#ifndef _WIN32
  if (old_file_ >= 0) ::close(old_file_);
#endif
  old_file_ = -1;
}

}  // namespace corvanet
