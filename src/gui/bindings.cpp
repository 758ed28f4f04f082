#include "gui/bindings.h"

#include <algorithm>

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalBlocker>

#include "core/app/settings.h"
#include "gui/page.h"

namespace corvanet::gui {

namespace {

// The table is fixed at build time, so a key a page names that the table lacks is a programming
// error worth stopping on at once rather than a control that silently does nothing.
const SettingDef& Setting(std::string_view key) {
  const SettingDef* def = FindSetting(key);
  Q_ASSERT_X(def != nullptr, "Bindings", "unknown settings key");
  return *def;
}

template <typename Member>
Member MemberOf(const SettingDef& def) {
  Q_ASSERT(std::holds_alternative<Member>(def.control));
  return std::get<Member>(def.control);
}

QString ObjectName(std::string_view key) {
  return QString::fromUtf8(key.data(), static_cast<qsizetype>(key.size()));
}

}  // namespace

QCheckBox* Bindings::SettingCheck(std::string_view key, const QString& caption) {
  const SettingDef& def = Setting(key);
  const auto field = MemberOf<int WindowState::*>(def);
  auto* box = new QCheckBox(caption);
  box->setObjectName(ObjectName(key));
  QObject::connect(box, &QCheckBox::clicked, box, [this, key = def.key](bool checked) {
    host_.Handle([key, checked](Session& s) { SetCheck(s, key, checked ? 1 : 0); });
  });
  OnRender([box, field](const WindowState& state) { ShowChecked(box, state.*field != 0); });
  return box;
}

QRadioButton* Bindings::SettingOption(std::string_view key, const QString& caption) {
  const SettingDef& def = Setting(key);
  const auto field = MemberOf<bool WindowState::*>(def);
  auto* option = new QRadioButton(caption);
  option->setObjectName(ObjectName(key));
  // The pair's exclusivity is the core's (setting one clears its partner); the widget only shows
  // it, so clicking a chosen option again changes nothing.
  option->setAutoExclusive(false);
  QObject::connect(option, &QRadioButton::clicked, option, [this, &def](bool) {
    host_.Handle([&def](Session& s) { SetSetting(s, def, "True", ValueSource::kUser); });
  });
  OnRender([option, field](const WindowState& state) { ShowChecked(option, state.*field); });
  return option;
}

QLineEdit* Bindings::SettingText(std::string_view key) {
  const SettingDef& def = Setting(key);
  const auto field = MemberOf<std::string WindowState::*>(def);
  auto* edit = new QLineEdit;
  edit->setObjectName(ObjectName(key));
  QObject::connect(edit, &QLineEdit::textEdited, edit, [this, &def](const QString& text) {
    host_.Handle([&def, value = text.toStdString()](Session& s) {
      SetSetting(s, def, value, ValueSource::kUser);
    });
  });
  OnRender([edit, field](const WindowState& state) { ShowText(edit, state.*field); });
  return edit;
}

QComboBox* Bindings::SettingCombo(std::string_view key,
                                  std::vector<std::string> WindowState::*items) {
  const SettingDef& def = Setting(key);
  auto* combo = MakeCombo(ObjectName(key), MemberOf<std::string WindowState::*>(def), items);
  QObject::connect(combo, &QComboBox::currentTextChanged, combo, [this, &def](const QString& text) {
    host_.Handle([&def, value = text.toStdString()](Session& s) {
      SetSetting(s, def, value, ValueSource::kUser);
    });
  });
  return combo;
}

QComboBox* Bindings::PlainCombo(const char* name, std::string WindowState::*field,
                                std::vector<std::string> WindowState::*items) {
  auto* combo = MakeCombo(name, field, items);
  QObject::connect(
      combo, &QComboBox::currentTextChanged, combo, [this, field](const QString& text) {
        host_.Handle([field, value = text.toStdString()](Session& s) { s.ui.*field = value; });
      });
  return combo;
}

QComboBox* Bindings::MakeCombo(const QString& name, std::string WindowState::*field,
                               std::vector<std::string> WindowState::*items) {
  auto* combo = new QComboBox;
  combo->setObjectName(name);
  // The drop-downs take free text as well as their items.
  combo->setEditable(true);
  combo->setInsertPolicy(QComboBox::NoInsert);
  OnRender([combo, field, items](const WindowState& state) {
    ShowComboItems(combo, state.*items);
    ShowComboText(combo, state.*field);
  });
  return combo;
}

QCheckBox* Bindings::PlainCheck(const char* name, int WindowState::*field, const QString& caption,
                                Handler after) {
  auto* box = new QCheckBox(caption);
  box->setObjectName(name);
  QObject::connect(box, &QCheckBox::clicked, box,
                   [this, field, after = std::move(after)](bool checked) {
                     host_.Handle([field, checked, &after](Session& s) {
                       s.ui.*field = checked ? 1 : 0;
                       if (after) after(s);
                     });
                   });
  OnRender([box, field](const WindowState& state) { ShowChecked(box, state.*field != 0); });
  return box;
}

QLineEdit* Bindings::PlainText(const char* name, std::string WindowState::*field) {
  auto* edit = new QLineEdit;
  edit->setObjectName(name);
  QObject::connect(edit, &QLineEdit::textEdited, edit, [this, field](const QString& text) {
    host_.Handle([field, value = text.toStdString()](Session& s) { s.ui.*field = value; });
  });
  OnRender([edit, field](const WindowState& state) { ShowText(edit, state.*field); });
  return edit;
}

QPushButton* Bindings::Button(const char* name, const QString& caption, Handler handler) {
  auto* button = new QPushButton(caption);
  button->setObjectName(name);
  // Without a handler the page connects the button itself.
  if (!handler) return button;
  QObject::connect(button, &QPushButton::clicked, button,
                   [this, handler = std::move(handler)] { host_.Handle(handler); });
  return button;
}

QPushButton* Bindings::WorkerButton(const char* name, const QString& caption, Handler handler) {
  auto* button = new QPushButton(caption);
  button->setObjectName(name);
  QObject::connect(button, &QPushButton::clicked, button,
                   [this, handler = std::move(handler)] { host_.HandleOnWorker(handler); });
  return button;
}

QPushButton* Bindings::SaveButton(const char* name, const QString& caption, Handler handler) {
  auto* button = new QPushButton(caption);
  button->setObjectName(name);
  QObject::connect(button, &QPushButton::clicked, button, [this, handler = std::move(handler)] {
    host_.Handle(handler);
    host_.FetchMasterfileIfMissing();
  });
  return button;
}

QPushButton* Bindings::SaveButton(const char* name, ControlView WindowState::*view,
                                  Handler handler) {
  auto* button = SaveButton(name, QString(), std::move(handler));
  OnRender([button, view](const WindowState& state) { ShowView(button, state.*view); });
  return button;
}

QPushButton* Bindings::RunButton(const char* name, ControlView WindowState::*view,
                                 Handler handler) {
  auto* button = new QPushButton;
  button->setObjectName(name);
  QObject::connect(button, &QPushButton::clicked, button,
                   [this, handler = std::move(handler)] { host_.StartRun(handler); });
  OnRender([button, view](const WindowState& state) { ShowView(button, state.*view); });
  return button;
}

QPushButton* Bindings::Button(const char* name, ControlView WindowState::*view, Handler handler) {
  auto* button = Button(name, QString(), std::move(handler));
  OnRender([button, view](const WindowState& state) { ShowView(button, state.*view); });
  return button;
}

QLabel* Bindings::Label(const char* name, ControlView WindowState::*view) {
  auto* label = new QLabel;
  label->setObjectName(name);
  label->setWordWrap(true);
  label->setTextFormat(Qt::PlainText);
  OnRender([label, view](const WindowState& state) { ShowView(label, state.*view); });
  return label;
}

QGroupBox* Bindings::Frame(const char* name, ControlView WindowState::*view) {
  auto* frame = new QGroupBox;
  frame->setObjectName(name);
  OnRender([frame, view](const WindowState& state) { ShowView(frame, state.*view); });
  return frame;
}

void Bindings::Render(const WindowState& state) const {
  for (const Renderer& renderer : renderers_) renderer(state);
}

void ShowText(QLineEdit* edit, const std::string& text) {
  const QString wanted = QString::fromStdString(text);
  if (edit->text() == wanted) return;
  const QSignalBlocker blocker(edit);
  edit->setText(wanted);
}

void ShowChecked(QAbstractButton* button, bool checked) {
  if (button->isChecked() == checked) return;
  const QSignalBlocker blocker(button);
  button->setChecked(checked);
}

void ShowComboText(QComboBox* combo, const std::string& text) {
  const QString wanted = QString::fromStdString(text);
  if (combo->currentText() == wanted) return;
  const QSignalBlocker blocker(combo);
  combo->setCurrentText(wanted);
}

void ShowComboItems(QComboBox* combo, const std::vector<std::string>& items) {
  bool same = combo->count() == static_cast<int>(items.size());
  for (int i = 0; same && i < combo->count(); ++i) {
    same = combo->itemText(i).toStdString() == items[static_cast<std::size_t>(i)];
  }
  if (same) return;
  const QSignalBlocker blocker(combo);
  // Replacing the items must not replace the text the state holds; the caller shows it next.
  const QString text = combo->currentText();
  combo->clear();
  for (const std::string& item : items) combo->addItem(QString::fromStdString(item));
  combo->setCurrentText(text);
}

QString Literal(const std::string& caption) {
  QString text = QString::fromStdString(caption);
  text.replace(QLatin1Char('&'), QLatin1String("&&"));
  return text;
}

int Pixels(int twips) {
  return twips / 15;
}

void ShowView(QAbstractButton* button, const ControlView& view) {
  const QString caption = Literal(view.caption);
  if (button->text() != caption) button->setText(caption);
  button->setVisible(view.visible);
  button->setEnabled(view.enabled);
  if (button->font().bold() != view.bold) {
    QFont font = button->font();
    font.setBold(view.bold);
    button->setFont(font);
  }
  // The classic sizes are a floor: a caption wider than its twips ("Save 'All Daily' Periods
  // Download Settings") would be clipped by them.
  button->setMinimumWidth(
      view.width == 0 ? 0 : std::max(Pixels(view.width), button->sizeHint().width()));
  button->setMinimumHeight(Pixels(view.height));
}

void ShowView(QLabel* label, const ControlView& view) {
  const QString caption = QString::fromStdString(view.caption);
  if (label->text() != caption) label->setText(caption);
  label->setVisible(view.visible);
  label->setEnabled(view.enabled);
  if (label->font().bold() != view.bold) {
    QFont font = label->font();
    font.setBold(view.bold);
    label->setFont(font);
  }
}

void ShowView(QGroupBox* frame, const ControlView& view) {
  const QString caption = QString::fromStdString(view.caption);
  if (frame->title() != caption) frame->setTitle(caption);
  frame->setVisible(view.visible);
  frame->setEnabled(view.enabled);
}

}  // namespace corvanet::gui
