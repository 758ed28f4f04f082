#include "core/app/settings.h"

#include <string>

#include "core/app/installation.h"
#include "core/download/early_fetches.h"
#include "core/download/refresh_masterfile.h"
#include "core/download/retrieve.h"
#include "core/lists/download_lists.h"
#include "core/lists/masterfile.h"
#include "core/platform/field_reader.h"
#include "core/platform/files.h"
#include "core/platform/paths.h"
#include "core/platform/run_lock.h"
#include "core/platform/text.h"
#include "core/state/log.h"
#include "core/ui/help_pages.h"
#include "core/ui/tabs.h"

namespace corvanet {

namespace {

using W = WindowState;

template <class... Fs>
struct Overloaded : Fs... {
  using Fs::operator()...;
};
template <class... Fs>
Overloaded(Fs...) -> Overloaded<Fs...>;

bool ParseOption(std::string_view text, bool& value) {
  text = Trim(text);
  if (EqualsIgnoreCase(text, "True")) return value = true, true;
  if (EqualsIgnoreCase(text, "False")) return value = false, true;
  double number = 0;
  if (!ParseNumber(text, number)) return false;
  value = number != 0;
  return true;
}

// A short, printable excerpt of a settings-file text for log lines.
std::string Excerpt(std::string_view text) {
  std::string excerpt;
  for (const char c : text.substr(0, 40)) {
    const auto u = static_cast<unsigned char>(c);
    excerpt += (u < 0x20 || u >= 0x7f) ? '?' : c;
  }
  return excerpt;
}

bool IsBlank(char c) {
  return c == ' ' || c == '\t';
}

// The field reader drops the blanks around an unquoted field, ends it at a comma and takes a field
// that starts with a quote as a quoted one: such texts are written in quotes, a quote within them
// doubled.
bool NeedsQuotes(std::string_view text) {
  return !text.empty() && (IsBlank(text.front()) || IsBlank(text.back()) || text.front() == '"' ||
                           text.find(',') != std::string_view::npos);
}

// The text as the settings file holds it, so that its reader gives back exactly `text`.
void AppendStoredText(std::string& line, std::string_view text) {
  if (!NeedsQuotes(text)) {
    line += text;
    return;
  }
  line += '"';
  for (const char c : text) {
    if (c == '"') line += '"';
    line += c;
  }
  line += '"';
}

}  // namespace

std::string StoredTextProblem(std::string_view text) {
  // One line per setting: a line break would end the value early.
  if (text.find_first_of("\r\n") != std::string_view::npos) return "it holds a line break";
  return {};
}

std::string PathTextProblem(std::string_view text) {
  if (HasControlCharacter(text)) return "it holds a line break or another control character";
  return {};
}

std::string SettingsFilePath(const Session& session) {
  return session.app.ProgramDirectory + "Rondex.ini";
}

std::string StoredValue(const Session& session, const SettingDef& def) {
  return std::visit(
      Overloaded{[&](int W::*m) { return CheckText(session.ui.*m); },
                 [&](bool W::*m) { return std::string(session.ui.*m ? "True" : "False"); },
                 [&](std::string W::*m) {
                   const std::string& text = session.ui.*m;
                   if (def.form != SettingForm::kPath) return text;
                   // Paths inside the installation are kept relative to it; any other path as
                   // it stands, so that it reads back as saved instead of losing its head.
                   const std::string& base = session.app.BaseDirectory;
                   if (!base.empty() && StartsWith(text, base)) return text.substr(base.size());
                   return text;
                 }},
      def.control);
}

std::string DisplayValue(const Session& session, const SettingDef& def) {
  return std::visit(
      Overloaded{[&](int W::*m) { return std::to_string(session.ui.*m); },
                 [&](bool W::*m) { return std::string(session.ui.*m ? "True" : "False"); },
                 [&](std::string W::*m) { return session.ui.*m; }},
      def.control);
}

std::string SettingValueProblem(const SettingDef& def, std::string_view text) {
  int number = 0;
  bool option = false;
  switch (def.form) {
    case SettingForm::kCheck:
      if (ParseInteger(text, number) && (number == 0 || number == 1)) return {};
      return "check boxes take 0 or 1";
    case SettingForm::kOption:
      if (ParseOption(text, option)) return {};
      return "option buttons take True or False";
    case SettingForm::kText:
      return StoredTextProblem(text);
    case SettingForm::kPath:
      return PathTextProblem(text);
  }
  return "unknown form";
}

bool SettingValueFits(const SettingDef& def, std::string_view text) {
  return SettingValueProblem(def, text).empty();
}

bool SetSetting(Session& session, const SettingDef& def, std::string_view text,
                ValueSource source) {
  bool changed = false;
  const bool fits =
      std::visit(Overloaded{[&](int W::*m) {
                              int value = 0;
                              if (!ParseInteger(text, value) || value < 0 || value > 1)
                                return false;
                              changed = session.ui.*m != value;
                              session.ui.*m = value;
                              return true;
                            },
                            [&](bool W::*m) {
                              bool value = false;
                              if (!ParseOption(text, value)) return false;
                              changed = session.ui.*m != value;
                              session.ui.*m = value;
                              if (value && !def.partner.empty()) {
                                if (const SettingDef* partner = FindSetting(def.partner)) {
                                  session.ui.*std::get<bool W::*>(partner->control) = false;
                                }
                              }
                              return true;
                            },
                            [&](std::string W::*m) {
                              if (def.form == SettingForm::kPath && !PathTextProblem(text).empty())
                                return false;
                              std::string value(text);
                              if (def.form == SettingForm::kPath &&
                                  source == ValueSource::kSettingsFile && !IsAbsolutePath(value)) {
                                value = session.app.BaseDirectory + value;
                              }
                              changed = session.ui.*m != value;
                              session.ui.*m = std::move(value);
                              return true;
                            }},
                 def.control);
  if (changed && def.on_change != nullptr) def.on_change(session, def);
  return fits;
}

void SetCheck(Session& session, std::string_view key, int value) {
  if (const SettingDef* def = FindSetting(key)) {
    SetSetting(session, *def, std::to_string(value), ValueSource::kUser);
  }
}

namespace {

// A folder of the settings file that holds a control character would end up in the converter
// batches: the installation's own folder of that kind is used instead, and the user hears of it.
void RefuseStoredFolder(Session& session, const SettingDef& def, const std::string& settings_file,
                        const std::string& problem) {
  const std::string folder = DefaultFolder(session, def.key);
  session.ui.*std::get<std::string W::*>(def.control) = folder;
  const std::string refused = "The folder " + std::string(def.key) + " in " + settings_file +
                              " is not used: " + problem + ".";
  Log(session, "LoadINI - " + refused);
  session.shell.MessageBox(
      refused + "\r" + folder + " is used instead; choose the folder again and save the settings.",
      "Corvanet Settings", Buttons::kOk, Icon::kExclamation);
}

}  // namespace

void LoadINI(Session& session) {
  LogEntry(session, "LoadINI");
  const std::string path = SettingsFilePath(session);
  if (!FileExists(path)) {
    // A new or damaged installation: the controls keep their design state.
    Log(session, "LoadINI - no settings file at " + path);
  } else {
    LineReader lines;
    if (!lines.Open(path)) {
      Log(session, "LoadINI - cannot read " + path);
    } else {
      session.ui.IPAddress.clear();
      std::string_view line;
      std::vector<std::string> fields;
      int line_number = 0;
      while (lines.Next(line)) {
        ++line_number;
        fields.clear();
        SplitFields(line, fields, QuoteRule::kDoubledQuoteEscapes);
        if (fields.size() == 1 && fields[0].empty()) continue;  // blank line
        // Fields pair up as key and value along the line: a value holding a comma leaves its tail
        // to be read as the next key, while a broken line cannot shift the lines after it.
        for (std::size_t i = 0; i < fields.size(); i += 2) {
          const SettingDef* def = FindSetting(fields[i]);
          if (def == nullptr && i > 0) {
            // The tail of a value that held a comma, perhaps of the password: never echoed.
            Log(session, "LoadINI - line " + std::to_string(line_number) +
                             " - text after a comma in the value of " + Excerpt(fields[0]) +
                             " skipped");
            continue;
          }
          if (def == nullptr) {
            Log(session, "LoadINI - line " + std::to_string(line_number) + " - unknown key " +
                             Excerpt(fields[i]) + " skipped");
            continue;
          }
          if (i + 1 >= fields.size()) {
            Log(session, "LoadINI - line " + std::to_string(line_number) + " - " +
                             std::string(def->key) + " has no value, skipped");
            continue;
          }
          if (def->form == SettingForm::kPath) {
            if (const std::string problem = PathTextProblem(fields[i + 1]); !problem.empty()) {
              RefuseStoredFolder(session, *def, path, problem);
              continue;
            }
          }
          if (!SetSetting(session, *def, fields[i + 1], ValueSource::kSettingsFile)) {
            Log(session, "LoadINI - line " + std::to_string(line_number) + " - " +
                             std::string(def->key) + " has a value of the wrong form, skipped");
          }
        }
      }
      if (lines.line_too_long()) {
        Log(session, "LoadINI - line " + std::to_string(line_number + 1) + " of " + path +
                         " is longer than any setting; it and the lines after it are skipped");
      } else if (lines.failed()) {
        Log(session, "LoadINI - read error in " + path);
      }
    }
  }
  ApplySpecialFunctionsTab(session.ui);
  SelectMasterfile(session);
  session.ui.WebBrowser1Page = session.ui.PathToLists + Folder("Docs") + "Intro.htm";
  SetUpOverview_Click(session);
}

std::string UnstorableSetting(const Session& session) {
  for (const SettingDef& def : SettingsTable()) {
    if (def.form != SettingForm::kText && def.form != SettingForm::kPath) continue;
    const std::string value = StoredValue(session, def);
    const std::string problem =
        def.form == SettingForm::kPath ? PathTextProblem(value) : StoredTextProblem(value);
    if (!problem.empty()) return std::string(def.key) + " cannot be saved as typed: " + problem;
  }
  return {};
}

bool WriteSettingsFile(Session& session) {
  if (const std::string problem = UnstorableSetting(session); !problem.empty()) {
    Log(session, "SaveToINI_Click - " + problem);
    return false;
  }
  AtomicFileWriter writer(SettingsFilePath(session), FileAccess::kOwnerOnly);
  std::string line;
  for (const SettingDef& def : SettingsTable()) {
    line.assign(def.key);
    line += ',';
    if (def.form == SettingForm::kText || def.form == SettingForm::kPath) {
      AppendStoredText(line, StoredValue(session, def));
    } else {
      line += StoredValue(session, def);  // " 1": the check form's blank is read back trimmed
    }
    writer.WriteLine(line);
  }
  if (writer.Commit()) return true;
  Log(session, "SaveToINI_Click - could not write " + writer.target() + ": " + writer.error());
  return false;
}

bool SaveToINI_Click(Session& session) {
  LogEntry(session, "SaveToINI_Click");
  const WindowState& ui = session.ui;
  if (ui.Password.empty() || ui.Password == "Enter password here" || ui.UserName.empty() ||
      ui.UserName == "Enter username here") {
    session.shell.MessageBox(
        "Please enter your username and password.\rBoth are needed before the settings can be "
        "saved.",
        "Corvanet Settings", Buttons::kOk, Icon::kExclamation);
    SetTabs(session);
    return false;
  }
  if (const std::string problem = UnstorableSetting(session); !problem.empty()) {
    session.shell.MessageBox(
        "Corvanet did not save its settings: " + problem + ".\rThe previous settings are kept.",
        "Corvanet Settings", Buttons::kOk, Icon::kExclamation);
    return false;
  }
  if (!WriteSettingsFile(session)) {
    session.shell.MessageBox("Corvanet could not save its settings to " +
                                 SettingsFilePath(session) + ".\rThe previous settings are kept.",
                             "Corvanet Settings", Buttons::kOk, Icon::kExclamation);
    return false;
  }
  return true;
}

void SaveSettings_Click(Session& session) {
  SaveToINI_Click(session);
}
void SaveSettings2_Click(Session& session) {
  SaveToINI_Click(session);
}

void RetryNumber_Change(Session& session) {
  LogEntry(session, "RetryNumber_Change");
  if (LeadingNumber(session.ui.RetryNumber) > 0) return;
  session.shell.MessageBox(
      "Please enter a whole numerical value.\rRetry number will now be reset to the default value.",
      kDefaultTitle, Buttons::kOk, Icon::kNone);
  // Assigned directly: the handler of the reset value would find nothing to refuse.
  session.ui.RetryNumber = "3";
}

void MaxDownloadMB_Change(Session& session) {
  LogEntry(session, "MaxDownloadMB_Change");
  if (MaxBodyBytes(session.ui) != 0) return;
  session.shell.MessageBox(
      "Please enter the largest download as a whole number of MiB.\rIt will "
      "now be reset to the default value.",
      kDefaultTitle, Buttons::kOk, Icon::kNone);
  session.ui.MaxDownloadMB = std::to_string(kDefaultMaxBodyMiB);
}

void LoadConfiguration_Click(Session& session) {
  LogEntry(session, "LoadConfiguration_Click");
  LoadINI(session);
  session.ui.List5.Clear();
  session.ui.List6.Clear();
  session.ui.DownLoadButton.caption = "When a Download List Is Loaded, Click Here To Download";
  session.ui.DownLoadButton.bold = true;
  SelectMasterfile(session);
  StartUpdateFilesOfList(session, session.app.RunListNum);
  // A master file fetched for the first time must show at once, not at the next list click. A run
  // of another process refreshes it itself; installing one under it would change its lists.
  RunLock lock;
  if (lock.AcquireUnlessHeld(session.app.ProgramDirectory, FormatTimeOfDay(session.clock.Now()))) {
    if (RefreshMasterfile(session) == MasterfileRefresh::kInstalled) LoadMasterfile(session);
  } else {
    Log(session, "LoadConfiguration_Click - " + lock.holder() + " The master file is left to it.");
  }
  // The list in hand is shown again as its file holds it: an emptied box with the list still
  // selected would be saved over the file by the next download.
  if (const int list = CurrentListNumber(session); list != 0) DownloadList_Click(session, list);
  SetTabs(session);
}

}  // namespace corvanet
