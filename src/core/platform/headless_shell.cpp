#include "core/platform/headless_shell.h"

#include <filesystem>

#include "core/platform/native_path.h"
#include "core/platform/process.h"

namespace corvanet {

Answer HeadlessShell::ShowMessageBox(std::string_view text, std::string_view /*title*/,
                                     Buttons buttons, Icon /*icon*/) {
  for (const char c : text) out_ << (c == '\r' ? '\n' : c);
  out_ << "\n\n";
  out_.flush();
  if (buttons == Buttons::kOk) return Answer::kOk;
  return answer_yes_ ? Answer::kYes : Answer::kNo;
}

bool HeadlessShell::OpenDocument(std::string_view target) {
  // No desktop to open it on: say where it is, so the user can open it.
  out_ << "Open: " << target << "\n";
  return true;
}

BatchProcess HeadlessShell::StartHidden(const std::string& batch_file,
                                        const std::string& working_folder,
                                        const std::vector<std::string>& environment) {
  return StartHiddenBatch(batch_file, working_folder,
                          program_folder_.empty() ? HelperFolder() : program_folder_, environment);
}

std::string HeadlessShell::ConverterProblem() {
  return corvanet::ConverterProblem(program_folder_.empty() ? HelperFolder() : program_folder_);
}

bool HeadlessShell::StartProgram(const std::string& name) {
  return corvanet::StartProgram(name);
}

std::string HeadlessShell::ChooseFile(const std::string& folder, std::string_view pattern) {
  out_ << "Files (" << pattern << ") in " << folder << ":\n";
  std::error_code ec;
  const std::string_view ending = pattern.substr(pattern.find('*') + 1);
  for (const auto& entry : std::filesystem::directory_iterator(NativePath(folder), ec)) {
    const std::string name = Utf8Path(entry.path().filename());
    if (name.size() >= ending.size() && name.ends_with(ending)) out_ << "  " << name << "\n";
  }
  return {};
}

}  // namespace corvanet
