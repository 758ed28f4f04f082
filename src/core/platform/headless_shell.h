#pragma once
// The shell of the command line: message boxes are printed (carriage returns as new lines, then an
// empty line) and questions are answered No, or Yes when asked to.
#include <ostream>

#include "core/platform/shell.h"

namespace corvanet {

class HeadlessShell final : public Shell {
 public:
  HeadlessShell(std::ostream& out, bool answer_yes, std::string program_folder = {})
      : out_(out), answer_yes_(answer_yes), program_folder_(std::move(program_folder)) {}

  Answer ShowMessageBox(std::string_view text, std::string_view title, Buttons buttons,
                        Icon icon) override;
  bool OpenDocument(std::string_view target) override;
  BatchProcess StartHidden(const std::string& batch_file, const std::string& working_folder,
                           const std::vector<std::string>& environment) override;
  std::string ConverterProblem() override;
  bool StartProgram(const std::string& name) override;
  // No dialog here: the files there are listed and none is chosen.
  std::string ChooseFile(const std::string& folder, std::string_view pattern) override;

 private:
  std::ostream& out_;
  bool answer_yes_;
  std::string program_folder_;
};

}  // namespace corvanet
