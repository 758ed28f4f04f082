#include "core/platform/headless_shell.h"

#include "core/platform/process.h"

namespace corvanet {

Answer HeadlessShell::MessageBox(std::string_view text, std::string_view /*title*/, Buttons buttons,
                                 Icon /*icon*/) {
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

bool HeadlessShell::StartHidden(const std::string& batch_file, const std::string& working_folder) {
  return StartHiddenBatch(batch_file, working_folder,
                          program_folder_.empty() ? ExecutableFolder() : program_folder_);
}

}  // namespace corvanet
