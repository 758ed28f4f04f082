#pragma once
// Binds widgets to the window state. Each binder makes a widget, forwards the user's edits to the
// core (settings controls through SetSetting / SetCheck, so their change handlers run) and records
// how the widget shows the state; Render replays those records. Widgets are named after their
// controls, so tests and style sheets find them by the names the core uses.
#include <QString>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "core/state/session.h"

class QAbstractButton;
class QCheckBox;
class QComboBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QWidget;

namespace corvanet::gui {

class PageHost;
using Handler = std::function<void(Session&)>;
using Renderer = std::function<void(const WindowState&)>;

class Bindings {
 public:
  explicit Bindings(PageHost& host) : host_(host) {}

  // Controls of the settings file, found by key.
  QCheckBox* SettingCheck(std::string_view key, const QString& caption);
  QRadioButton* SettingOption(std::string_view key, const QString& caption);
  QLineEdit* SettingText(std::string_view key);
  QComboBox* SettingCombo(std::string_view key, std::vector<std::string> WindowState::*items);

  // Controls the settings file does not hold: the field is assigned, then `after` runs.
  QCheckBox* PlainCheck(const char* name, int WindowState::*field, const QString& caption,
                        Handler after = {});
  QLineEdit* PlainText(const char* name, std::string WindowState::*field);
  QComboBox* PlainCombo(const char* name, std::string WindowState::*field,
                        std::vector<std::string> WindowState::*items);

  QPushButton* Button(const char* name, const QString& caption, Handler handler);
  QPushButton* Button(const char* name, ControlView WindowState::*view, Handler handler);
  // A button that saves the settings; a new user's master list is fetched once the log-in is.
  QPushButton* SaveButton(const char* name, const QString& caption, Handler handler);
  QPushButton* SaveButton(const char* name, ControlView WindowState::*view, Handler handler);
  // A button whose handler may run long (it fetches or walks a list): it runs on the worker.
  QPushButton* WorkerButton(const char* name, const QString& caption, Handler handler);
  // The download button: a run on the worker that the user can stop.
  QPushButton* RunButton(const char* name, ControlView WindowState::*view, Handler handler);
  QLabel* Label(const char* name, ControlView WindowState::*view);
  QGroupBox* Frame(const char* name, ControlView WindowState::*view);

  void OnRender(Renderer renderer) { renderers_.push_back(std::move(renderer)); }
  void Render(const WindowState& state) const;

  PageHost& host() { return host_; }

 private:
  QComboBox* MakeCombo(const QString& name, std::string WindowState::*field,
                       std::vector<std::string> WindowState::*items);

  PageHost& host_;
  std::vector<Renderer> renderers_;
};

// Render helpers: each changes the widget only when the state differs from what it shows, with the
// widget's signals blocked, so rendering never reads back as a user's edit.
void ShowText(QLineEdit* edit, const std::string& text);
void ShowChecked(QAbstractButton* button, bool checked);
void ShowComboText(QComboBox* combo, const std::string& text);
void ShowComboItems(QComboBox* combo, const std::vector<std::string>& items);
void ShowView(QAbstractButton* button, const ControlView& view);
void ShowView(QLabel* label, const ControlView& view);
void ShowView(QGroupBox* frame, const ControlView& view);
// A caption shown as written: "&" is a letter, not an accelerator mark.
QString Literal(const std::string& caption);
// Twips to pixels at the classic 15 twips a pixel.
int Pixels(int twips);

}  // namespace corvanet::gui
