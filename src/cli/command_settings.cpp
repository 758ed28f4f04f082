// settings [KEY=VALUE ...] [--password-stdin]: set controls as a user would, then save; with none,
// print them all, the password masked.
#include <iostream>
#include <set>
#include <vector>

#include "cli/commands.h"
#include "core/app/settings.h"
#include "core/platform/paths.h"
#include "core/platform/terminal.h"
#include "core/stats/statistic_choices.h"

namespace corvanet::cli {

namespace {

constexpr std::string_view kPasswordKey = "Password";

// The password as printed: whether one is set, never its text nor its length. The initial text
// and an empty one are shown as they are: neither is a secret, and both tell that none is set.
std::string PrintedValue(const Session& session, const SettingDef& def) {
  const std::string value = DisplayValue(session, def);
  if (def.key != kPasswordKey || value.empty() || value == WindowState().Password) return value;
  return "********";
}

// The first line of the input, without its line end; asked for without echo at a terminal.
bool ReadPassword(CommandContext& context, std::string& password) {
  const CliEnvironment& environment = context.environment;
  bool read = false;
  if (environment.input != nullptr) {
    read = static_cast<bool>(std::getline(*environment.input, password));
  } else if (environment.input_terminal) {
    context.err << "Password: " << std::flush;
    read = ReadLineWithoutEcho(password);
  } else {
    read = static_cast<bool>(std::getline(std::cin, password));
  }
  if (read && !password.empty() && password.back() == '\r') password.pop_back();
  return read;
}

}  // namespace

int SettingsCommand(CommandContext& context, const CommandLine& line) {
  Session& session = context.session;
  std::vector<std::string> args = line.words;
  if (args.empty() && !line.password_stdin) {
    std::set<std::string_view> printed;
    for (const SettingDef& def : SettingsTable()) {
      if (printed.insert(def.key).second) {
        context.out << def.key << '=' << PrintedValue(session, def) << '\n';
      }
    }
    return kExitOk;
  }
  if (line.password_stdin) {
    std::string password;
    if (!ReadPassword(context, password)) {
      return UsageError(context, "settings", "--password-stdin found no line to read");
    }
    args.push_back(std::string(kPasswordKey) + "=" + password);
  }
  // Every pair is checked before any control changes, so a typo changes nothing.
  std::vector<std::pair<const SettingDef*, std::string>> changes;
  for (const std::string& arg : args) {
    const auto equals = arg.find('=');
    if (equals == std::string::npos)
      return UsageError(context, "settings", "expected KEY=VALUE: " + arg);
    const SettingDef* def = FindSetting(std::string_view(arg).substr(0, equals));
    if (def == nullptr)
      return UsageError(context, "settings", "unknown setting: " + arg.substr(0, equals));
    std::string value = arg.substr(equals + 1);
    if (const std::string problem = SettingValueProblem(*def, value); !problem.empty()) {
      // A password is never echoed.
      const std::string shown =
          def->key == kPasswordKey ? std::string("this value") : '"' + value + '"';
      return UsageError(context, "settings",
                        std::string(def->key) + " does not take " + shown + ": " + problem);
    }
    // A user-defined column takes only a name its drop-down offers.
    if (IsStatisticColumnSetting(def->key)) {
      if (const std::string problem = StatisticChoiceProblem(session, value); !problem.empty()) {
        return UsageError(context, "settings",
                          std::string(def->key) + " does not take \"" + value + "\": " + problem);
      }
    }
    // A folder given relative is relative to the installation, as the settings file keeps it.
    if (def->form == SettingForm::kPath && !value.empty() && !IsAbsolutePath(value)) {
      value = session.app.BaseDirectory + value;
    }
    changes.emplace_back(def, std::move(value));
  }
  for (const auto& [def, value] : changes) SetSetting(session, *def, value, ValueSource::kUser);
  return SaveToINI_Click(session) ? kExitOk : kExitRefused;
}

}  // namespace corvanet::cli
