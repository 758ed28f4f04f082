// The command line as a new user meets it: help, the version, and every kind of usage error, each
// with its status and a message that names the bad argument. None of them touches an installation.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "cli/command_line.h"
#include "cli_fixture.h"

namespace corvanet::test {
namespace {

using Args = std::vector<std::string>;

class CommandLineTest : public CliTest {
 protected:
  void TearDown() override {
    EXPECT_FALSE(Exists(base())) << "nothing is installed before the command line is understood";
    EXPECT_FALSE(Exists(start() + "LogFile.txt"));
  }
};

TEST_F(CommandLineTest, HelpAndVersionGoToTheOutputAndSucceed) {
  struct Case {
    Args args;
    std::vector<std::string> shown;
  };
  const std::vector<Case> cases = {
      {{"--help"},
       {"Usage: corvanet-cli [OPTIONS] [SUBCOMMAND]", "--base-dir", "--quiet", "--version",
        "  run                         Bring every datafile of download list N up to date",
        "  schedule ", "Exit status:\n  0  done\n", "  5  another run holds the installation"}},
      {{"--version"}, {"corvanet-cli 5.1\n"}},
      {{"--base-dir", "x", "stats", "-h"}, {"Make the single-statistic files of download list N"}},
      {{"list", "--help"}, {"add TEXT", "periods D,W,M,Q", "EDIT"}},
  };
  for (const Case& c : cases) {
    const CliResult result = Run(c.args);
    EXPECT_EQ(result.code, 0) << c.args.front();
    EXPECT_EQ(result.err, "") << c.args.front();
    for (const std::string& text : c.shown) {
      EXPECT_TRUE(Contains(result.out, text)) << c.args.front() << ": " << text;
    }
  }
}

TEST_F(CommandLineTest, UsageErrorsNameTheBadArgumentAndExitTwo) {
  struct Case {
    Args args;
    std::string named;  // what the message must hold
    std::string help;   // the help it points to
  };
  const std::vector<Case> cases = {
      {{"frobnicate"}, "frobnicate", "corvanet-cli --help"},
      {{"--base-dir"}, "--base-dir", "corvanet-cli --help"},
      {{"run"}, "N is required", "corvanet-cli run --help"},
      {{"run", "8"}, "8", "corvanet-cli run --help"},
      {{"stats", "-1"}, "-1", "corvanet-cli stats --help"},
      {{"refresh-masterfile", "--force"}, "--force", "corvanet-cli refresh-masterfile --help"},
      {{"run", "1", "--log", "--bogus"}, "--bogus", "corvanet-cli run --help"},
      {{"schedule", "1", "--at", "24:00"}, "24:00", "corvanet-cli schedule --help"},
      {{"schedule", "--list", "--remove", "2"}, "--remove", "corvanet-cli schedule --help"},
  };
  for (const Case& c : cases) {
    Args args = c.args;
    const CliResult result = Run(args);
    const std::string shown = c.args.back();
    EXPECT_EQ(result.code, cli::kExitUsage) << shown << result.err;
    EXPECT_TRUE(Contains(result.err, c.named)) << shown << ": " << result.err;
    EXPECT_TRUE(Contains(result.err, "Run '" + c.help + "' for more."))
        << shown << ": " << result.err;
    EXPECT_EQ(result.out, "") << shown;
  }
}

}  // namespace
}  // namespace corvanet::test
