#pragma once
// A Shell for tests: records every message box and opened document, and answers questions from a
// queue set up by the test (OK boxes always answer kOk; an empty queue answers No).
#include <deque>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "core/platform/shell.h"

namespace corvanet::test {

class ScriptedShell final : public Shell {
 public:
  struct Box {
    std::string text;
    std::string title;
    Buttons buttons = Buttons::kOk;
    Icon icon = Icon::kNone;
  };

  Answer ShowMessageBox(std::string_view text, std::string_view title, Buttons buttons,
                        Icon icon) override {
    boxes.push_back({std::string(text), std::string(title), buttons, icon});
    if (buttons == Buttons::kOk) return Answer::kOk;
    if (answers.empty()) return Answer::kNo;
    const Answer answer = answers.front();
    answers.pop_front();
    return answer;
  }
  bool OpenDocument(std::string_view target) override {
    opened.emplace_back(target);
    return true;
  }
  BatchProcess StartHidden(const std::string& batch_file, const std::string& working_folder,
                           const std::vector<std::string>& /*environment*/) override {
    started.push_back(working_folder + batch_file);
    if (on_start) on_start();
    return BatchProcess::Ended();
  }
  std::string ConverterProblem() override { return converter_problem; }
  bool StartProgram(const std::string& name) override {
    programs.push_back(name);
    return known_programs;
  }
  std::string ChooseFile(const std::string& folder, std::string_view /*pattern*/) override {
    return chosen_file.empty() ? std::string() : folder + chosen_file;
  }

  // The texts of the boxes shown so far, in order.
  std::vector<std::string> texts() const {
    std::vector<std::string> result;
    for (const Box& box : boxes) result.push_back(box.text);
    return result;
  }
  void Reset() {
    boxes.clear();
    opened.clear();
    started.clear();
  }

  std::vector<Box> boxes;
  std::vector<std::string> opened;
  std::vector<std::string> started;   // working folder + batch file of each StartHidden
  std::deque<Answer> answers;         // replies to Yes/No and Yes/No/Cancel questions
  std::vector<std::string> programs;  // names given to StartProgram
  bool known_programs = false;        // whether StartProgram finds them
  std::string chosen_file;            // what ChooseFile answers, in the folder it is given
  std::string converter_problem;      // what ConverterProblem answers
  std::function<void()> on_start;     // called as each batch is started
};

}  // namespace corvanet::test
