#pragma once
// Checks a composite datafile the way the tests need it checked, so any suite can use it on a file
// it fetched, merged or wrote.
#include <string>
#include <vector>

namespace corvanet::test {

// The problems of a whole datafile, each prefixed with its line number: CR LF line ends, a header
// and rows of 68 fields, numbers where numbers belong, one period letter throughout, calendar
// dates rising. Stops after 50.
std::vector<std::string> ValidateDatafile(const std::string& path);

}  // namespace corvanet::test
