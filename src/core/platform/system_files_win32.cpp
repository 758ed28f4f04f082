#include <aclapi.h>
#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <cerrno>
#include <memory>
#include <vector>

#include "core/platform/atomic_file_writer.h"
#include "core/platform/system_files.h"
#include "core/platform/windows_text.h"

namespace corvanet {

namespace {

// An access list granting the current user everything and nobody else anything, protected from
// the entries a folder would pass down; empty when the user cannot be told.
class OwnerOnlyAcl {
 public:
  OwnerOnlyAcl() {
    HANDLE token = nullptr;
    if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token)) return;
    DWORD size = 0;
    GetTokenInformation(token, TokenUser, nullptr, 0, &size);
    std::vector<unsigned char> user(size);
    const bool known = GetTokenInformation(token, TokenUser, user.data(), size, &size);
    CloseHandle(token);
    if (!known) return;
    PSID sid = reinterpret_cast<TOKEN_USER*>(user.data())->User.Sid;
    const DWORD acl_size = sizeof(ACL) + sizeof(ACCESS_ALLOWED_ACE) + GetLengthSid(sid);
    acl_.resize(acl_size);
    auto* acl = reinterpret_cast<PACL>(acl_.data());
    if (!InitializeAcl(acl, acl_size, ACL_REVISION) ||
        !AddAccessAllowedAce(acl, ACL_REVISION, FILE_ALL_ACCESS, sid) ||
        !InitializeSecurityDescriptor(&descriptor_, SECURITY_DESCRIPTOR_REVISION) ||
        !SetSecurityDescriptorDacl(&descriptor_, TRUE, acl, FALSE) ||
        !SetSecurityDescriptorControl(&descriptor_, SE_DACL_PROTECTED, SE_DACL_PROTECTED)) {
      acl_.clear();
    }
  }
  OwnerOnlyAcl(const OwnerOnlyAcl&) = delete;
  OwnerOnlyAcl& operator=(const OwnerOnlyAcl&) = delete;

  PACL acl() { return acl_.empty() ? nullptr : reinterpret_cast<PACL>(acl_.data()); }
  // For CreateFileW: the file is owner-only from its creation on.
  SECURITY_ATTRIBUTES* attributes() {
    if (acl_.empty()) return nullptr;
    attributes_ = {sizeof attributes_, &descriptor_, FALSE};
    return &attributes_;
  }

 private:
  std::vector<unsigned char> acl_;
  SECURITY_DESCRIPTOR descriptor_{};
  SECURITY_ATTRIBUTES attributes_{};
};

void SetErrnoFromLastError() {
  switch (GetLastError()) {
    case ERROR_FILE_EXISTS:
    case ERROR_ALREADY_EXISTS:
      errno = EEXIST;
      break;
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
      errno = ENOENT;
      break;
    case ERROR_ACCESS_DENIED:
    case ERROR_SHARING_VIOLATION:
      errno = EACCES;
      break;
    case ERROR_DISK_FULL:
      errno = ENOSPC;
      break;
    default:
      errno = EIO;
  }
}

}  // namespace

std::FILE* OpenForWriting(const std::string& path, FileAccess access, bool exclusive) {
  std::unique_ptr<OwnerOnlyAcl> owner_only;
  if (access == FileAccess::kOwnerOnly) owner_only = std::make_unique<OwnerOnlyAcl>();
  // Appends go through FILE_APPEND_DATA, which the system places at the end however many
  // processes append at once. A new file is shared for reading only: while its writer has it
  // open, nobody (a sweep in another process included) can remove or replace it.
  const DWORD rights = exclusive ? GENERIC_WRITE : FILE_APPEND_DATA | SYNCHRONIZE;
  const DWORD sharing = exclusive ? FILE_SHARE_READ : FILE_SHARE_READ | FILE_SHARE_WRITE;
  HANDLE file = CreateFileW(windows::Wide(path).c_str(), rights, sharing,
                            owner_only ? owner_only->attributes() : nullptr,
                            exclusive ? CREATE_NEW : OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) {
    SetErrnoFromLastError();
    return nullptr;
  }
  const int descriptor =
      _open_osfhandle(reinterpret_cast<intptr_t>(file), exclusive ? 0 : _O_APPEND);
  if (descriptor < 0) {
    CloseHandle(file);
    return nullptr;
  }
  std::FILE* stream = _fdopen(descriptor, exclusive ? "wb" : "ab");
  if (stream == nullptr) _close(descriptor);
  return stream;
}

bool ReplaceFileWith(const std::string& from, const std::string& to, std::string& error) {
  const std::wstring source = windows::Wide(from);
  const std::wstring target = windows::Wide(to);
  // A reader that opened the target without sharing its deletion (a virus scanner, an editor)
  // holds it for a moment: the rename is tried again a few times before it counts as failed.
  for (int attempt = 0;; ++attempt) {
    if (MoveFileExW(source.c_str(), target.c_str(),
                    MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) {
      return true;
    }
    const DWORD code = GetLastError();
    if ((code != ERROR_ACCESS_DENIED && code != ERROR_SHARING_VIOLATION) || attempt == 4) {
      error = windows::ErrorText(code);
      return false;
    }
    Sleep(50);
  }
}

bool FlushToDisk(std::FILE* file) {
  const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(file)));
  if (handle == INVALID_HANDLE_VALUE || FlushFileBuffers(handle)) return true;
  SetErrnoFromLastError();
  return false;
}

bool RestrictToOwner(const std::string& path) {
  OwnerOnlyAcl owner_only;
  if (owner_only.acl() == nullptr) return false;
  std::wstring name = windows::Wide(path);
  return SetNamedSecurityInfoW(name.data(), SE_FILE_OBJECT,
                               DACL_SECURITY_INFORMATION | PROTECTED_DACL_SECURITY_INFORMATION,
                               nullptr, nullptr, owner_only.acl(), nullptr) == ERROR_SUCCESS;
}

}  // namespace corvanet
