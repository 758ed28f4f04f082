#include <windows.h>
// After windows.h, whose types it uses.
#include <aclapi.h>

#include <cstdlib>
#include <stdexcept>
#include <vector>

#include "core/platform/process.h"
#include "core/platform/windows_text.h"
#include "support/child_process.h"
#include "support/test_support.h"

namespace corvanet::test {

namespace {

HANDLE OpenForAppending(const std::string& path) {
  SECURITY_ATTRIBUTES inherit{sizeof inherit, nullptr, TRUE};
  return CreateFileW(windows::Wide(path).c_str(), FILE_APPEND_DATA | SYNCHRONIZE,
                     FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, &inherit, OPEN_ALWAYS,
                     FILE_ATTRIBUTE_NORMAL, nullptr);
}

HANDLE HandleOf(ChildId child) {
  return reinterpret_cast<HANDLE>(child);
}

}  // namespace

ChildId SpawnChild(const std::string& path, const std::vector<std::string>& args,
                   const std::string& out_file, const std::string& err_file,
                   const std::string& folder) {
  std::string line = QuotedForCommandLine(path);
  for (const std::string& arg : args) line += " " + QuotedForCommandLine(arg);
  std::wstring command = windows::Wide(line);
  SECURITY_ATTRIBUTES inherit{sizeof inherit, nullptr, TRUE};
  HANDLE in = CreateFileW(L"NUL", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherit,
                          OPEN_EXISTING, 0, nullptr);
  HANDLE out = OpenForAppending(out_file);
  HANDLE err = OpenForAppending(err_file);
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdInput = in;
  startup.hStdOutput = out;
  startup.hStdError = err;
  PROCESS_INFORMATION info{};
  const bool started = CreateProcessW(
      windows::Wide(path).c_str(), command.data(), nullptr, nullptr, TRUE, CREATE_NO_WINDOW,
      nullptr, folder.empty() ? nullptr : windows::Wide(folder).c_str(), &startup, &info);
  for (HANDLE handle : {in, out, err}) {
    if (handle != INVALID_HANDLE_VALUE) CloseHandle(handle);
  }
  if (!started) throw std::runtime_error("cannot start " + path);
  CloseHandle(info.hThread);
  return reinterpret_cast<ChildId>(info.hProcess);
}

std::intptr_t HoldForeignRunLock(const std::string& folder, const std::string& note) {
  HANDLE file = CreateFileW(windows::Wide(folder + "RunLock.txt").c_str(),
                            GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                            nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  // The byte run_lock_win32.cpp locks, past the note, which stays readable.
  OVERLAPPED range{};
  range.OffsetHigh = 1;
  if (file == INVALID_HANDLE_VALUE ||
      !LockFileEx(file, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &range)) {
    throw std::runtime_error("cannot lock " + folder);
  }
  const std::string text = note + "\r\n";
  DWORD written = 0;
  OVERLAPPED at{};
  WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &written, &at);
  return reinterpret_cast<std::intptr_t>(file);
}

void ReleaseForeignRunLock(std::intptr_t lock) {
  CloseHandle(reinterpret_cast<HANDLE>(lock));
}

bool MakeFifo(const std::string& /*path*/) {
  return false;
}

bool ChildEnded(ChildId child, int& exit_code) {
  if (WaitForSingleObject(HandleOf(child), 0) != WAIT_OBJECT_0) return false;
  DWORD code = 0;
  GetExitCodeProcess(HandleOf(child), &code);
  CloseHandle(HandleOf(child));
  exit_code = static_cast<int>(code);
  return true;
}

int WaitForChild(ChildId child, std::chrono::milliseconds limit) {
  int exit_code = -1;
  bool ended = false;
  WaitFor([&] { return ended = ChildEnded(child, exit_code); }, limit);
  if (!ended) {
    KillChild(child);
    return -1;
  }
  return exit_code;
}

void StopChild(ChildId child) {
  TerminateProcess(HandleOf(child), 1);
}

void KillChild(ChildId child) {
  TerminateProcess(HandleOf(child), 1);
  WaitForSingleObject(HandleOf(child), INFINITE);
  CloseHandle(HandleOf(child));
}

long CurrentProcessId() {
  return static_cast<long>(GetCurrentProcessId());
}

void SetEnvironmentDefault(const std::string& name, const std::string& value) {
  if (std::getenv(name.c_str()) == nullptr) _putenv_s(name.c_str(), value.c_str());
}

bool RenameOver(const std::string& from, const std::string& to) {
  return MoveFileExW(windows::Wide(from).c_str(), windows::Wide(to).c_str(),
                     MOVEFILE_REPLACE_EXISTING) != 0;
}

bool IsOwnerOnly(const std::string& path) {
  PACL acl = nullptr;
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  if (GetNamedSecurityInfoW(windows::Wide(path).c_str(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION,
                            nullptr, nullptr, &acl, nullptr, &descriptor) != ERROR_SUCCESS) {
    return false;
  }
  SECURITY_DESCRIPTOR_CONTROL control = 0;
  DWORD revision = 0;
  GetSecurityDescriptorControl(descriptor, &control, &revision);
  bool owner_only = acl != nullptr && acl->AceCount == 1 && (control & SE_DACL_PROTECTED) != 0;
  if (owner_only) {
    void* entry = nullptr;
    HANDLE token = nullptr;
    DWORD size = 0;
    std::vector<unsigned char> user(256);
    owner_only = GetAce(acl, 0, &entry) &&
                 static_cast<ACE_HEADER*>(entry)->AceType == ACCESS_ALLOWED_ACE_TYPE &&
                 OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token) &&
                 GetTokenInformation(token, TokenUser, user.data(), static_cast<DWORD>(user.size()),
                                     &size) &&
                 EqualSid(&static_cast<ACCESS_ALLOWED_ACE*>(entry)->SidStart,
                          reinterpret_cast<TOKEN_USER*>(user.data())->User.Sid);
    if (token != nullptr) CloseHandle(token);
  }
  LocalFree(descriptor);
  return owner_only;
}

void OpenToOthers(const std::string& path) {
  // Everyone may read it, as a file copied in from elsewhere may allow.
  EXPLICIT_ACCESSW everyone{};
  wchar_t name[] = L"Everyone";
  BuildExplicitAccessWithNameW(&everyone, name, GENERIC_READ, GRANT_ACCESS, NO_INHERITANCE);
  PACL acl = nullptr;
  if (SetEntriesInAclW(1, &everyone, nullptr, &acl) != ERROR_SUCCESS) return;
  std::wstring wide = windows::Wide(path);
  SetNamedSecurityInfoW(wide.data(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr,
                        acl, nullptr);
  LocalFree(acl);
}

}  // namespace corvanet::test
