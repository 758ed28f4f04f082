// settings [KEY=VALUE ...]: set controls as a user would, then save; with none, print them all.
#include <set>
#include <vector>

#include "cli/commands.h"
#include "core/app/settings.h"
#include "core/platform/paths.h"
#include "core/stats/statistic_choices.h"

namespace corvanet::cli {

int SettingsCommand(CommandContext& context, const CommandLine& line) {
  Session& session = context.session;
  const std::vector<std::string>& args = line.words;
  if (args.empty()) {
    std::set<std::string_view> printed;
    for (const SettingDef& def : SettingsTable()) {
      if (printed.insert(def.key).second) {
        context.out << def.key << '=' << DisplayValue(session, def) << '\n';
      }
    }
    return kExitOk;
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
          def->key == "Password" ? std::string("this value") : '"' + value + '"';
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
