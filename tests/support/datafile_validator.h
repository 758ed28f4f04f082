#pragma once
// Checks composite datafiles the way the tests need them checked: the 68-column layout with its
// types, and the consistency between columns that the demo service's data keeps (prices ordered,
// counts adding up to the constituents, volumes adding up, dates on weekdays). Any test suite can
// use it on a file it fetched, merged or wrote.
#include <string>
#include <string_view>
#include <vector>

namespace corvanet::test {

// The problems of one row (without its line end); empty when the row is sound.
std::vector<std::string> ValidateRow(std::string_view row);

// The problems of a whole datafile, each prefixed with its line number: a header of 68 fields,
// every row sound, CR LF line ends, one period letter throughout, dates rising. Stops after 50.
std::vector<std::string> ValidateDatafile(const std::string& path);

}  // namespace corvanet::test
