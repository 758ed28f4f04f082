// "General Settings": log-in, data set, messages, special functions, log file, folders, server.
#include <QCheckBox>
#include <QEvent>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTimer>
#include <QVBoxLayout>

#include "core/app/settings.h"
#include "core/lists/clear_datafiles.h"
#include "core/state/log.h"
#include "core/ui/outside_programs.h"
#include "gui/folder_browse.h"
#include "gui/page.h"

namespace corvanet::gui {

namespace {

// Clicking into a field that still holds its initial text ("Enter username here") selects that
// text, so what the user types replaces it instead of landing inside it.
class ReplaceInitialText final : public QObject {
 public:
  ReplaceInitialText(QLineEdit* edit, const std::string& initial)
      : QObject(edit), initial_(QString::fromStdString(initial)) {
    edit->installEventFilter(this);
  }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    auto* edit = static_cast<QLineEdit*>(watched);
    if (event->type() == QEvent::FocusIn && edit->text() == initial_) {
      // After the click that gave the focus has placed the cursor.
      QTimer::singleShot(0, edit, [edit] { edit->selectAll(); });
    }
    return false;
  }

 private:
  QString initial_;
};

class GeneralPage final : public Page {
 public:
  explicit GeneralPage(PageHost& host) : Page(host) {
    auto* columns = new QHBoxLayout(content());
    auto* left = new QVBoxLayout;
    auto* right = new QVBoxLayout;
    columns->addLayout(left, 3);
    columns->addLayout(right, 2);

    auto* login = new QGridLayout;
    const WindowState initial;
    login->addWidget(new QLabel("User Name"), 0, 0);
    QLineEdit* user = bind_.SettingText("UserName");
    new ReplaceInitialText(user, initial.UserName);
    login->addWidget(user, 0, 1);
    login->addWidget(new QLabel("Password"), 1, 0);
    password_ = bind_.SettingText("Password");
    new ReplaceInitialText(password_, initial.Password);
    login->addWidget(password_, 1, 1);
    login->addWidget(Note("Both are case sensitive."), 2, 1);
    left->addWidget(Group("Frame4", "Log In Info", login));

    auto* data_set = new QVBoxLayout;
    auto* boxes = new QHBoxLayout;
    boxes->addWidget(bind_.SettingCheck("Plus", "Plus"));
    boxes->addWidget(bind_.SettingCheck("AllUS", "All US"));
    boxes->addStretch();
    data_set->addLayout(boxes);
    data_set->addWidget(bind_.Label("FullPath", &WindowState::FullPath));
    left->addWidget(Group("Frame12", "Data Set", data_set));

    auto* paths = new QGridLayout;
    AddPathRow(paths, 0, "Directory To Download .csv Files Into", "PathToDataFiles",
               "BrowseToDownloadPath", FolderKind::kDataFiles);
    AddPathRow(paths, 2, "Directory Containing Download Lists", "PathToLists",
               "BrowseToCompositeListPath", FolderKind::kLists);
    left->addWidget(Group("Frame5", "File Paths", paths));

    auto* server = new QGridLayout;
    server->addWidget(new QLabel("Data Service Address"), 0, 0);
    server->addWidget(bind_.SettingText("IPAddress"), 0, 1);
    server->addWidget(Note("Such as https://data.example.com; a host and port alone, such as "
                           "127.0.0.1:8080, is plain HTTP."),
                      1, 1);
    server->addWidget(new QLabel("Own Authority (PEM)"), 2, 0);
    server->addWidget(bind_.SettingText("CAFile"), 2, 1);
    server->addWidget(Note("Only for a service whose certificate comes from an authority of its "
                           "own: that authority's certificate file, trusted besides this "
                           "computer's."),
                      3, 1);
    server->addWidget(new QLabel("Retries"), 4, 0);
    auto* retries = bind_.SettingText("RetryNumber");
    retries->setMaximumWidth(80);
    server->addWidget(retries, 4, 1, Qt::AlignLeft);
    server->addWidget(new QLabel("Largest Download (MiB)"), 5, 0);
    auto* largest = bind_.SettingText("MaxDownloadMB");
    largest->setMaximumWidth(80);
    server->addWidget(largest, 5, 1, Qt::AlignLeft);
    left->addWidget(Group("FrameServer", "Data Service", server));
    left->addStretch();

    right->addWidget(
        Group("Frame11", "System Messages", OptionPair("SystemMessagesYes", "SystemMessagesNo")));
    right->addWidget(Group("Frame10", "\"Download Complete\" Pop-Up Message",
                           OptionPair("DownloadCompleteMessageYes", "DownloadCompleteMessageNo")));
    auto* special = new QVBoxLayout;
    special->addWidget(
        bind_.SettingCheck("ImplementSpecialFunctions", "Implement Special Functions"));
    right->addWidget(Group("Frame15", "Special Functions", special));
    auto* log = new QVBoxLayout;
    log->addWidget(bind_.PlainCheck("GenerateLogFile", &WindowState::GenerateLogFile,
                                    "Generate Log File", &GenerateLogFile_Click));
    log->addWidget(Note(
        "This setting is not saved in your configuration file and must be selected upon each new "
        "run of the Corvanet program."));
    log->addWidget(
        Note("When requested by Tessaly support, however, this log file can be "
             "instrumental in identifying the cause of many errors."));
    right->addWidget(Group("Frame16", "Generate Log File", log));
    auto* desktop = new QVBoxLayout;
    desktop->addWidget(bind_.Button("CreateShortcut", "Create Desktop Shortcut",
                                    [](Session& s) { CreateShortcut_Click(s); }),
                       0, Qt::AlignLeft);
    right->addWidget(Group("FrameShortcut", "Desktop Shortcut", desktop));
    right->addStretch();

    auto* buttons = new QGridLayout;
    buttons->addWidget(bind_.SaveButton("SaveToINI", "Save Settings", &SaveToINI_Click), 0, 0);
    // Reloading fetches a fresh master file from the service, which may take a while.
    buttons->addWidget(
        bind_.WorkerButton("LoadConfiguration", "Reload Saved Settings", &LoadConfiguration_Click),
        0, 1);
    buttons->addWidget(bind_.Button("ClearDataFiles", "Clear Datafiles",
                                    [](Session& s) { ClearDataFiles_Click(s); }),
                       1, 0);
    auto* exit = new QPushButton("Exit");
    exit->setObjectName("Exit2");
    connect(exit, &QPushButton::clicked, this, [this] { host_.ExitClicked(2); });
    buttons->addWidget(exit, 1, 1);
    buttons->addWidget(InertExitButton("Delete2"), 2, 1);
    right->addLayout(buttons);
  }

  void Render(const WindowState& state) override {
    bind_.Render(state);
    // The initial text stays readable; a real password never shows. Not PasswordEchoOnEdit: that
    // mode empties the field at the first key typed after it gets the focus, which cost a password
    // typed over the initial text its first character.
    const bool initial = state.Password.empty() || state.Password == WindowState().Password;
    const QLineEdit::EchoMode mode = initial ? QLineEdit::Normal : QLineEdit::Password;
    if (password_->echoMode() != mode) password_->setEchoMode(mode);
  }

 private:
  QLayout* OptionPair(std::string_view yes, std::string_view no) {
    auto* row = new QHBoxLayout;
    row->addWidget(bind_.SettingOption(yes, "Yes"));
    row->addWidget(bind_.SettingOption(no, "No"));
    row->addStretch();
    return row;
  }

  void AddPathRow(QGridLayout* grid, int row, const QString& label, std::string_view key,
                  const char* browse_name, FolderKind kind) {
    grid->addWidget(new QLabel(label), row, 0, 1, 2);
    grid->addWidget(bind_.SettingText(key), row + 1, 0);
    auto* browse = new QPushButton("Browse To Directory");
    browse->setObjectName(browse_name);
    connect(browse, &QPushButton::clicked, this, [this, kind] {
      host_.Handle([this, kind](Session& s) { BrowseToDirectory(s, kind, this); });
    });
    grid->addWidget(browse, row + 1, 1);
  }

  QLineEdit* password_ = nullptr;
};

}  // namespace

Page* MakeGeneralPage(PageHost& host) {
  return new GeneralPage(host);
}

}  // namespace corvanet::gui
