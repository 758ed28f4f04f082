#include "demo_service/options.h"

#include <charconv>

namespace corvanet::demo {

namespace {

template <typename T>
bool ParseWhole(std::string_view text, T& value) {
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  return !text.empty() && result.ec == std::errc() && result.ptr == text.data() + text.size();
}

}  // namespace

Options::Options(const std::vector<std::string>& args, const std::vector<OptionSpec>& known) {
  for (std::size_t i = 0; i < args.size(); ++i) {
    std::string_view arg = args[i];
    if (arg.substr(0, 2) != "--" || arg.size() == 2) {
      throw UsageError("unexpected argument '" + args[i] + "'");
    }
    arg.remove_prefix(2);
    std::string name(arg.substr(0, arg.find('=')));
    const OptionSpec* option = nullptr;
    for (const OptionSpec& s : known) {
      if (s.name == name) option = &s;
    }
    if (option == nullptr) throw UsageError("unknown option --" + name);
    std::string value;
    if (arg.find('=') != std::string_view::npos) {
      value = std::string(arg.substr(arg.find('=') + 1));
    } else if (i + 1 < args.size()) {
      value = args[++i];
    } else {
      throw UsageError("option --" + name + " needs a value");
    }
    auto& slot = values_[name];
    if (!slot.empty() && !option->repeatable) throw UsageError("option --" + name + " given twice");
    slot.push_back(std::move(value));
  }
}

bool Options::Has(std::string_view name) const {
  return values_.find(name) != values_.end();
}

const std::string& Options::Required(std::string_view name) const {
  const auto it = values_.find(name);
  if (it == values_.end()) throw UsageError("option --" + std::string(name) + " is required");
  return it->second.front();
}

std::string Options::Text(std::string_view name, std::string_view fallback) const {
  return Has(name) ? Required(name) : std::string(fallback);
}

std::vector<std::string> Options::All(std::string_view name) const {
  const auto it = values_.find(name);
  return it == values_.end() ? std::vector<std::string>{} : it->second;
}

std::int64_t Options::Integer(std::string_view name, std::int64_t fallback, std::int64_t low,
                              std::int64_t high) const {
  if (!Has(name)) return fallback;
  const std::string& text = Required(name);
  std::int64_t value = 0;
  if (!ParseWhole(text, value) || value < low || value > high) {
    throw UsageError("option --" + std::string(name) + " wants a whole number from " +
                     std::to_string(low) + " to " + std::to_string(high) + ", not '" + text + "'");
  }
  return value;
}

std::uint64_t Options::Unsigned(std::string_view name, std::uint64_t fallback) const {
  if (!Has(name)) return fallback;
  const std::string& text = Required(name);
  std::uint64_t value = 0;
  if (!ParseWhole(text, value)) {
    throw UsageError("option --" + std::string(name) + " wants a whole number, not '" + text + "'");
  }
  return value;
}

std::string RootFolder(const Options& options) {
  std::string root = options.Required("root");
  if (root.empty()) throw UsageError("option --root needs a folder");
  if (root.back() != '/') root += '/';
  return root;
}

}  // namespace corvanet::demo
