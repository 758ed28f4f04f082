#pragma once
// The window's shell: message boxes, opening documents and starting hidden batch files. Downloads
// run on a worker thread, so every request that touches the desktop is carried over to the window's
// thread, and the worker waits there for the user's answer.
#include <QObject>
#include <functional>
#include <string>

#include "core/platform/shell.h"

namespace corvanet::gui {

struct MessageRequest {
  std::string text;  // carriage returns already turned into line breaks
  std::string title;
  Buttons buttons = Buttons::kOk;
  Icon icon = Icon::kNone;
};

// What the shell does on the window's thread. Tests replace these so nothing waits for a person.
struct DesktopActions {
  std::function<Answer(const MessageRequest&)> message_box;
  std::function<bool(const std::string&)> open_document;
  // A file dialog in a folder with a name pattern; "" when cancelled.
  std::function<std::string(const std::string&, const std::string&)> choose_file;
  // Moves a file to the trash, giving where it went; false where there is none. Empty: no trash.
  std::function<bool(const std::string&, std::string&)> move_to_trash;
};

// The real desktop: QMessageBox, QDesktopServices and the desktop's trash.
DesktopActions QtDesktopActions();

class QtShell final : public QObject, public Shell {
  Q_OBJECT

 public:
  // `program_folder` is where the converter helpers are found; "" = the executable's folder.
  explicit QtShell(DesktopActions actions = QtDesktopActions(), std::string program_folder = {});

  Answer ShowMessageBox(std::string_view text, std::string_view title, Buttons buttons,
                        Icon icon) override;
  bool OpenDocument(std::string_view target) override;
  BatchProcess StartHidden(const std::string& batch_file, const std::string& working_folder,
                           const std::vector<std::string>& environment) override;
  std::string ConverterProblem() override;
  bool StartProgram(const std::string& name) override;
  std::string ChooseFile(const std::string& folder, std::string_view pattern) override;
  bool MoveToTrash(const std::string& path, std::string& now_at) override;

 private:
  // Runs `action` on the thread this object lives on and waits for its result.
  template <typename Result>
  Result OnWindowThread(const std::function<Result()>& action);

  DesktopActions actions_;
  std::string program_folder_;
};

// "a\rb" -> "a\nb"; a CR LF pair stays one line break.
std::string LineBreaksFromCarriageReturns(std::string_view text);

}  // namespace corvanet::gui
