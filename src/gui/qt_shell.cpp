#include "gui/qt_shell.h"

#include <QApplication>
#include <QDesktopServices>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QThread>
#include <QUrl>

#include "core/platform/process.h"

namespace corvanet::gui {

namespace {

QMessageBox::Icon QtIcon(Icon icon) {
  switch (icon) {
    case Icon::kInformation:
      return QMessageBox::Information;
    case Icon::kExclamation:
      return QMessageBox::Warning;
    case Icon::kQuestion:
      return QMessageBox::Question;
    case Icon::kCritical:
      return QMessageBox::Critical;
    case Icon::kNone:
      break;
  }
  return QMessageBox::NoIcon;
}

Answer ShowMessageBox(const MessageRequest& request) {
  QMessageBox box(QtIcon(request.icon), QString::fromStdString(request.title),
                  QString::fromStdString(request.text), QMessageBox::NoButton,
                  QApplication::activeWindow());
  switch (request.buttons) {
    case Buttons::kOk:
      box.setStandardButtons(QMessageBox::Ok);
      break;
    case Buttons::kYesNo:
      box.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
      break;
    case Buttons::kYesNoCancel:
      box.setStandardButtons(QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
      break;
  }
  switch (box.exec()) {
    case QMessageBox::Yes:
      return Answer::kYes;
    case QMessageBox::No:
      return Answer::kNo;
    case QMessageBox::Cancel:
      return Answer::kCancel;
    default:
      // Closing a question with the window's close box counts as its escape answer.
      if (request.buttons == Buttons::kYesNoCancel) return Answer::kCancel;
      if (request.buttons == Buttons::kYesNo) return Answer::kNo;
      return Answer::kOk;
  }
}

bool OpenWithDesktop(const std::string& target) {
  const QString text = QString::fromStdString(target);
  // A local document is opened by path; anything else (a web address) by URL.
  const QUrl url = QFileInfo::exists(text) ? QUrl::fromLocalFile(text) : QUrl::fromUserInput(text);
  return url.isValid() && QDesktopServices::openUrl(url);
}

std::string ChooseFileWithDialog(const std::string& folder, const std::string& pattern) {
  return QFileDialog::getOpenFileName(QApplication::activeWindow(), QString(),
                                      QString::fromStdString(folder),
                                      QString::fromStdString(pattern))
      .toStdString();
}

bool MoveToDesktopTrash(const std::string& path, std::string& now_at) {
  QString in_trash;
  if (!QFile::moveToTrash(QString::fromStdString(path), &in_trash)) return false;
  now_at = in_trash.toStdString();
  return true;
}

}  // namespace

DesktopActions QtDesktopActions() {
  return {&ShowMessageBox, &OpenWithDesktop, &ChooseFileWithDialog, &MoveToDesktopTrash};
}

std::string LineBreaksFromCarriageReturns(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\r') {
      out += text[i];
    } else if (i + 1 >= text.size() || text[i + 1] != '\n') {
      out += '\n';
    }
  }
  return out;
}

QtShell::QtShell(DesktopActions actions, std::string program_folder)
    : actions_(std::move(actions)), program_folder_(std::move(program_folder)) {}

template <typename Result>
Result QtShell::OnWindowThread(const std::function<Result()>& action) {
  if (QThread::currentThread() == thread()) return action();
  Result result{};
  QMetaObject::invokeMethod(
      this, [&] { result = action(); }, Qt::BlockingQueuedConnection);
  return result;
}

Answer QtShell::ShowMessageBox(std::string_view text, std::string_view title, Buttons buttons,
                               Icon icon) {
  MessageRequest request{LineBreaksFromCarriageReturns(text), std::string(title), buttons, icon};
  return OnWindowThread<Answer>([&] { return actions_.message_box(request); });
}

bool QtShell::OpenDocument(std::string_view target) {
  const std::string text(target);
  return OnWindowThread<bool>([&] { return actions_.open_document(text); });
}

BatchProcess QtShell::StartHidden(const std::string& batch_file, const std::string& working_folder,
                                  const std::vector<std::string>& environment) {
  // Starting a process needs nothing of the window, so it stays on the caller's thread.
  return StartHiddenBatch(batch_file, working_folder,
                          program_folder_.empty() ? HelperFolder() : program_folder_, environment);
}

std::string QtShell::ConverterProblem() {
  return corvanet::ConverterProblem(program_folder_.empty() ? HelperFolder() : program_folder_);
}

bool QtShell::StartProgram(const std::string& name) {
  return corvanet::StartProgram(name);
}

std::string QtShell::ChooseFile(const std::string& folder, std::string_view pattern) {
  const std::string filter(pattern);
  return OnWindowThread<std::string>(
      [&] { return actions_.choose_file ? actions_.choose_file(folder, filter) : std::string(); });
}

bool QtShell::MoveToTrash(const std::string& path, std::string& now_at) {
  // Moving a file needs nothing of the window, so it stays on the caller's thread.
  return actions_.move_to_trash && actions_.move_to_trash(path, now_at);
}

}  // namespace corvanet::gui
