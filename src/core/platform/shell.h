#pragma once
// What the program asks of the desktop: message boxes and questions, opening a document or an
// address, and starting a process with no window. The window and the command line each provide one.
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "core/platform/process.h"

namespace corvanet {

enum class Buttons { kOk, kYesNo, kYesNoCancel };
enum class Icon { kNone, kInformation, kExclamation, kQuestion, kCritical };
enum class Answer { kOk, kYes, kNo, kCancel };

// The title message boxes carry when a step names none.
inline constexpr std::string_view kDefaultTitle = "Corvanet";

class Shell {
 public:
  virtual ~Shell() = default;
  // Shows a message box and waits for the answer; `text` may hold carriage returns as line breaks.
  // While messages are diverted, the divert gets the text instead and the box's escape answer is
  // given (No, Cancel or OK).
  Answer MessageBox(std::string_view text, std::string_view title, Buttons buttons, Icon icon) {
    if (divert_) {
      divert_(text, title);
      return buttons == Buttons::kOk      ? Answer::kOk
             : buttons == Buttons::kYesNo ? Answer::kNo
                                          : Answer::kCancel;
    }
    return ShowMessageBox(text, title, buttons, icon);
  }
  // For an unattended run, which no one is there to answer; an empty function ends the divert.
  using MessageDivert = std::function<void(std::string_view text, std::string_view title)>;
  void DivertMessages(MessageDivert divert) { divert_ = std::move(divert); }
  // Opens a document or web address with the system's associated program; false on failure.
  virtual bool OpenDocument(std::string_view target) = 0;
  // Starts a batch file in `working_folder` with no window and does not wait for it;
  // `environment` ("NAME=value") is added to the batch's.
  virtual BatchProcess StartHidden(const std::string& batch_file, const std::string& working_folder,
                                   const std::vector<std::string>& environment) = 0;
  // Why the converter that StartHidden's batches call cannot run ("" when it can); see
  // ConverterProblem in process.h.
  virtual std::string ConverterProblem() = 0;
  // Starts a program found by its name, detached; false when there is no such program.
  virtual bool StartProgram(const std::string& name) = 0;
  // Lets the user choose one file of `folder` whose name matches `pattern` ("*.csv"); the chosen
  // path, or "" when the user cancelled or no file could be offered.
  virtual std::string ChooseFile(const std::string& folder, std::string_view pattern) = 0;

  // Moves a file to the desktop's trash, leaving in `now_at` where it went. False where there is
  // no trash or the move failed; the file is then where it was.
  virtual bool MoveToTrash(const std::string& /*path*/, std::string& /*now_at*/) { return false; }

  // A message with an OK button and the default title.
  void Notify(std::string_view text) { MessageBox(text, kDefaultTitle, Buttons::kOk, Icon::kNone); }

 protected:
  virtual Answer ShowMessageBox(std::string_view text, std::string_view title, Buttons buttons,
                                Icon icon) = 0;

 private:
  MessageDivert divert_;
};

}  // namespace corvanet
