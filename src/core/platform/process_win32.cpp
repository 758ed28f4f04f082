// Starting programs on Windows: the converter batch files run by cmd.exe with no window.
#include <windows.h>

#include <cstdlib>
#include <map>
#include <mutex>
#include <string_view>
#include <vector>

#include "core/platform/paths.h"
#include "core/platform/process.h"
#include "core/platform/windows_text.h"

namespace corvanet {

namespace {

// The batches started and not yet seen to end, by process id: BatchProcess holds only the id, and
// the handle keeps the id from being given to another process meanwhile.
std::mutex children_mutex;
std::map<DWORD, HANDLE> children;

// The environment block of this process with PATH led by `first_folder` and `extra` ("NAME=value")
// added or replacing; names compare without letter case, as Windows compares them.
std::wstring ChildEnvironment(const std::wstring& first_folder,
                              const std::vector<std::wstring>& extra) {
  auto name_of = [](std::wstring_view entry) {
    std::wstring name(entry.substr(0, entry.find(L'=', 1)));
    CharUpperBuffW(name.data(), static_cast<DWORD>(name.size()));
    return name;
  };
  std::wstring block;
  std::wstring path = L"PATH=" + first_folder;
  wchar_t* strings = GetEnvironmentStringsW();
  for (const wchar_t* entry = strings; entry != nullptr && *entry != L'\0';
       entry += std::wcslen(entry) + 1) {
    const std::wstring_view text(entry);
    const std::wstring name = name_of(text);
    if (name == L"PATH") {
      path += L';';
      path += text.substr(5);
      continue;
    }
    bool replaced = false;
    for (const std::wstring& e : extra) replaced = replaced || name_of(e) == name;
    if (replaced) continue;
    block += text;
    block += L'\0';
  }
  FreeEnvironmentStringsW(strings);
  block += path;
  block += L'\0';
  for (const std::wstring& e : extra) {
    block += e;
    block += L'\0';
  }
  block += L'\0';
  return block;
}

// The variable that hands the batch file's path to cmd.exe: a value cmd expands is not parsed again
// for '%', and inside the quotes around it '&', '^' and blanks are plain characters, so any folder
// name reaches cmd intact.
constexpr std::wstring_view kBatchVariable = L"CORVANET_BATCH_FILE";

}  // namespace

bool BatchProcess::Running() {
  if (id_ <= 0) return false;
  const std::lock_guard lock(children_mutex);
  const auto child = children.find(static_cast<DWORD>(id_));
  if (child != children.end()) {
    if (WaitForSingleObject(child->second, 0) == WAIT_TIMEOUT) return true;
    CloseHandle(child->second);
    children.erase(child);
  }
  id_ = 0;
  ended_ = true;
  return false;
}

BatchProcess StartHiddenBatch(const std::string& batch_file, const std::string& working_folder,
                              const std::string& program_folder,
                              const std::vector<std::string>& environment) {
  std::vector<std::wstring> extra;
  for (const std::string& entry : environment) extra.push_back(windows::Wide(entry));
  extra.push_back(std::wstring(kBatchVariable) + L"=" + windows::Wide(batch_file));
  std::wstring folder = windows::Wide(program_folder);
  if (!folder.empty() && folder.back() == L'\\') folder.pop_back();
  std::wstring block = ChildEnvironment(folder, extra);

  wchar_t system_folder[MAX_PATH] = {};
  const UINT length = GetSystemDirectoryW(system_folder, MAX_PATH);
  const std::wstring cmd = std::wstring(system_folder, length) + L"\\cmd.exe";
  // /d: no AutoRun commands; /s /c: the outer quotes are taken off and the rest runs as it stands.
  std::wstring command = L"cmd.exe /d /s /c \"\"%" + std::wstring(kBatchVariable) + L"%\"\"";
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION info{};
  if (!CreateProcessW(cmd.c_str(), command.data(), nullptr, nullptr, FALSE,
                      CREATE_NO_WINDOW | CREATE_UNICODE_ENVIRONMENT | CREATE_NEW_PROCESS_GROUP,
                      block.data(), windows::Wide(working_folder).c_str(), &startup, &info)) {
    return {};
  }
  CloseHandle(info.hThread);
  const std::lock_guard lock(children_mutex);
  children.emplace(info.dwProcessId, info.hProcess);
  return BatchProcess(static_cast<long>(info.dwProcessId));
}

std::string QuoteBatchArgument(std::string_view argument) {
  // Inside double quotes cmd.exe takes blanks, "&" and ";" as they are; only "%" still expands
  // in a batch file. Windows paths cannot hold a double quote.
  std::string quoted = "\"";
  for (const char c : argument) {
    quoted += c;
    if (c == '%') quoted += '%';
  }
  quoted += '"';
  return quoted;
}

std::string ConverterProblem(const std::string& program_folder) {
  for (const char* helper : {"PxFiles.exe", "Complete.exe"}) {
    if (GetFileAttributesW(windows::Wide(program_folder + helper).c_str()) ==
        INVALID_FILE_ATTRIBUTES) {
      return std::string(helper) + " was not found in " + program_folder;
    }
  }
  return {};
}

bool StartProgram(const std::string& name) {
  if (name.empty() || name.find_first_of("/\\") != std::string::npos) return false;
  wchar_t found[MAX_PATH] = {};
  if (SearchPathW(nullptr, windows::Wide(name).c_str(), L".exe", MAX_PATH, found, nullptr) == 0) {
    return false;
  }
  std::wstring command = L"\"" + std::wstring(found) + L"\"";
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION info{};
  if (!CreateProcessW(found, command.data(), nullptr, nullptr, FALSE, DETACHED_PROCESS, nullptr,
                      nullptr, &startup, &info)) {
    return false;
  }
  CloseHandle(info.hThread);
  CloseHandle(info.hProcess);
  return true;
}

std::string ExecutableFolder() {
  std::wstring buffer(MAX_PATH, L'\0');
  for (;;) {
    const DWORD n = GetModuleFileNameW(nullptr, buffer.data(), static_cast<DWORD>(buffer.size()));
    if (n == 0) return {};
    if (n < buffer.size()) {
      buffer.resize(n);
      break;
    }
    buffer.resize(buffer.size() * 2);
  }
  buffer.resize(buffer.rfind(L'\\') + 1);
  return windows::Utf8(buffer);
}

std::string HomeFolder() {
  const wchar_t* profile = _wgetenv(L"USERPROFILE");
  if (profile == nullptr || *profile == L'\0') return {};
  return WithTrailingSeparator(windows::Utf8(profile));
}

const char* const kSystemBaseDirectoryRule =
    "the program folder's first two levels, C:\\Tessaly\\ for C:\\Tessaly\\Rondex\\";

std::string SystemBaseDirectory() {
  std::string program_folder = ExecutableFolder();
  if (!program_folder.empty()) program_folder.pop_back();
  return BaseDirectoryFromProgramFolder(program_folder);
}

}  // namespace corvanet
