#pragma once
// The three commands. Each takes the words after the command name; usage mistakes throw
// UsageError, failures of the work throw RunError (options.h). The return value is the exit status.
#include <iosfwd>
#include <string>
#include <vector>

namespace corvanet::demo {

int Generate(const std::vector<std::string>& args, std::ostream& out);
int Advance(const std::vector<std::string>& args, std::ostream& out);
int Serve(const std::vector<std::string>& args, std::ostream& out, std::ostream& log);

}  // namespace corvanet::demo
