#pragma once
// Command-line options of the form "--name value" or "--name=value". Each command declares the
// options it knows; anything else is a usage error with a message that names the culprit.
#include <cstdint>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace corvanet::demo {

// A mistake in the command line: the message is printed with the usage text, exit status 2.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A failure while doing the work (a file, a port): printed alone, exit status 1.
class RunError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct OptionSpec {
  std::string_view name;  // without the leading "--"
  bool repeatable = false;
};

class Options {
 public:
  // Throws UsageError for an unknown option, a missing value or an unexpected word.
  Options(const std::vector<std::string>& args, const std::vector<OptionSpec>& known);

  bool Has(std::string_view name) const;
  // The value given, or throws UsageError naming the missing option.
  const std::string& Required(std::string_view name) const;
  std::string Text(std::string_view name, std::string_view fallback) const;
  // All values of a repeatable option, in command-line order.
  std::vector<std::string> All(std::string_view name) const;
  // A whole number within [low, high], or throws UsageError.
  std::int64_t Integer(std::string_view name, std::int64_t fallback, std::int64_t low,
                       std::int64_t high) const;
  std::uint64_t Unsigned(std::string_view name, std::uint64_t fallback) const;

 private:
  std::map<std::string, std::vector<std::string>, std::less<>> values_;
};

// The folder given by --root with a trailing '/', or throws UsageError.
std::string RootFolder(const Options& options);

}  // namespace corvanet::demo
