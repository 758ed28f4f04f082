#pragma once
// The period update file, read once per period: each line's service symbol (characters 1-15,
// trimmed) with its row (from character 17, trimmed), kept in file order per symbol. A datafile
// takes its rows from here instead of rescanning the whole file, with the same result.
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace corvanet {

inline constexpr std::size_t kUpdateSlots = 5;

class UpdateFileIndex {
 public:
  // False when the file cannot be read. Lines too short to hold a row, or whose row has no
  // YYYYMMDD date in characters 3-10, are garbled: they are counted and left out.
  bool Load(const std::string& path);
  // Forgets the rows (loaded() is false), keeping the memory that held them for the next Load.
  void Clear();
  bool loaded() const { return loaded_; }

  // The rows of `web_symbol`: the lines whose symbol is `web_symbol` or `web_symbol` without its
  // first character, merged in file order, at most the first (oldest) five.
  std::vector<std::string_view> RowsFor(std::string_view web_symbol) const;
  // Whether the rows of `web_symbol` ran out before five were found, and the file's last line
  // belongs to another symbol (a rescan would then end on that line).
  bool EndsOnOtherSymbol(std::string_view web_symbol) const;
  const std::string& last_symbol() const { return last_symbol_; }
  int garbled_lines() const { return garbled_lines_; }
  // The commas of the file's first row: the shape of the service's rows (npos with no row).
  std::size_t row_commas() const { return row_commas_; }
  int first_garbled_line() const { return first_garbled_line_; }

 private:
  // A row is kept as its place in rows_text_: one buffer for the whole file instead of one
  // allocation per line.
  struct Line {
    int number;
    std::size_t offset;
    std::size_t size;
  };
  std::string rows_text_;
  std::unordered_map<std::string, std::vector<Line>> rows_by_symbol_;
  std::string last_symbol_;
  int garbled_lines_ = 0;
  int first_garbled_line_ = 0;
  std::size_t row_commas_ = std::string_view::npos;
  bool loaded_ = false;
};

// Characters 3-10 of a datafile row: its YYYYMMDD date (shorter when the row is short).
inline std::string_view RowDate(std::string_view row) {
  return row.size() > 2 ? row.substr(2, 8) : std::string_view();
}
// A row whose characters 3-10 are eight digits.
bool HasRowDate(std::string_view row);

}  // namespace corvanet
