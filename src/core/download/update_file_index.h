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

// One line of the update file that names a symbol: its row, checked or not, and where it stands.
struct UpdateRow {
  std::string_view text;
  int line = 0;  // in the update file, from 1
};

class UpdateFileIndex {
 public:
  // False when the file cannot be read. Lines too short to hold a row, or whose row has no
  // YYYYMMDD date in characters 3-10, are garbled and counted; those that name a symbol stay among
  // its rows, where the merge finds them wanting and reports them (they take a slot as any line of
  // the symbol does).
  bool Load(const std::string& path);
  // Forgets the rows (loaded() is false), keeping the memory that held them for the next Load.
  void Clear();
  bool loaded() const { return loaded_; }

  // The rows of `web_symbol`: the lines whose symbol is `web_symbol` or `web_symbol` without its
  // first character, merged in file order, at most the first (oldest) five.
  std::vector<UpdateRow> RowsFor(std::string_view web_symbol) const;
  // An update file kept from an earlier run, merged because this run's could not be had: its rows
  // may end before a datafile does without anything being wrong.
  void set_kept(bool kept) { kept_ = kept; }
  bool kept() const { return kept_; }
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
  bool kept_ = false;
};

// Characters 3-10 of a datafile row: its YYYYMMDD date (shorter when the row is short).
inline std::string_view RowDate(std::string_view row) {
  return row.size() > 2 ? row.substr(2, 8) : std::string_view();
}
// A row whose characters 3-10 are eight digits.
bool HasRowDate(std::string_view row);

}  // namespace corvanet
