#pragma once
// The composite datafile: one header line, then one row of 68 comma-separated fields per bar. This
// is the one place that knows the column layout; the download engine copies whole lines.
#include <array>
#include <bitset>
#include <cstdint>
#include <string>
#include <string_view>

#include "core/platform/line_reader.h"
#include "core/stats/field_split.h"

namespace corvanet {

inline constexpr int kCompositeColumnCount = 68;
inline constexpr int kLooseColumnCount = 14;  // FV2 ... FV15

// Columns a read converts, bit c - 1 for column c.
using ColumnSet = std::bitset<kCompositeColumnCount>;
inline ColumnSet AllColumns() {
  return ColumnSet().set();
}

// One of FV2 ... FV15: a number when its text reads as one, else the text. The service gives these
// no fixed meaning, so they are kept as read.
struct LooseValue {
  bool is_number = true;
  double number = 0;
  std::string text;
};

// One row, the fields in column order. Text members keep their capacity from row to row, so reading
// a datafile allocates nothing once the first row is in.
struct CompositeRow {
  std::string Period;        // "D", "W", "M" or "Q"
  std::int32_t RowDate = 0;  // YYYYMMDD
  std::string RowDateText;   // "MM/DD/YYYY"
  double OpenPx = 0, HighPx = 0, LowPx = 0, ClosePx = 0;
  double UpperTrendChannel = 0, Pivot = 0, LowerTrendChannel = 0;
  std::int32_t UpTrends = 0, NewUpTrends = 0, DownTrends = 0, NewDownTrends = 0;
  double TotalVolume = 0;
  std::int32_t Advances = 0, Declines = 0;
  double UpVolume = 0, DownVolume = 0;
  std::int32_t NewHighs = 0, NewLows = 0, Traded = 0, Unchanged = 0;
  double PercentAbove200ma = 0, PercentAbove30ma = 0, PercentAbove18ma = 0, PercentAbove9ma = 0,
         PercentAbove4ma = 0;
  std::int32_t Above200ma = 0, Below200ma = 0, Equal200ma = 0;
  std::int32_t Above30ma = 0, Below30ma = 0, Equal30ma = 0;
  std::int32_t Above18ma = 0, Below18ma = 0, Equal18ma = 0;
  std::int32_t Above9ma = 0, Below9ma = 0, Equal9ma = 0;
  std::int32_t Above4ma = 0, Below4ma = 0, Equal4ma = 0;
  std::int32_t QNewHighs = 0, QNewLows = 0, NewHighs1stDay = 0, NewLows1stDay = 0;
  std::int32_t QNewHighs1stDay = 0, QNewLows1stDay = 0;
  double EqWtOpen = 0, EqWtHigh = 0, EqWtLow = 0, EqWtClose = 0;
  double TradeVolume = 0;
  std::array<LooseValue, kLooseColumnCount> FV;  // FV[0] is FV2
};

// What a column name resolves to for the current row. Integer and double columns give numbers,
// Period (and an FV column holding text) gives text, an unknown name the empty value.
struct StatisticValue {
  enum class Kind { kEmpty, kInteger, kDouble, kText };
  Kind kind = Kind::kEmpty;
  double number = 0;
  std::string_view text;  // valid while the row is

  // The value as a number: the empty value is 0. False for text, which is no number (a column
  // naming Period in a price file is a configuration mistake the user must see, not a silent 0).
  bool ToDouble(double& out) const;
};

// 1-based column of a catalogue name (exact, case-sensitive); 0 for an unknown name. Column 3, the
// date as text, has no catalogue name.
int FindColumn(std::string_view name);
// Whether a column (1-68) holds a 32-bit whole number (the date and the counts).
bool IsIntegerColumn(int column);
// Whether a column (1-68) always holds text (Period), so it can never be a number.
bool IsTextColumn(int column);
std::string_view ColumnName(int column);
// The value of a column (1-68) of the row; the empty value for 0 or a column out of range.
StatisticValue ColumnValue(const CompositeRow& row, int column);
// The member behind a column for writers that fetch one column of every row: the integer or the
// double field, nullptr when the column is of the other type (or not numeric).
const std::int32_t* IntegerField(const CompositeRow& row, int column);
const double* DoubleField(const CompositeRow& row, int column);
// ColumnValue(row, FindColumn(name)).
StatisticValue GetStatisticValue(const CompositeRow& row, std::string_view name);

// Why a datafile could not be read to its end. Number and description are the classic error pair
// that support already knows from the price-file log lines; `detail` says where in the file.
struct DatafileError {
  int number = 0;
  std::string_view description;
  std::string detail;

  bool has_error() const { return number != 0; }
  // "Type mismatch (line 7, column 11 UpTrends: \"x\")", or the description alone.
  std::string Text() const;
};

// "<procedure> Error #  53 - File not found - $NYA.csv - Daily": the line an error trap logs (the
// number keeps the blank the number rule puts before it).
std::string ErrorTrapLine(std::string_view procedure, const DatafileError& error,
                          std::string_view datafile, std::string_view period);

inline constexpr int kErrorOverflow = 6;
inline constexpr int kErrorTypeMismatch = 13;
inline constexpr int kErrorFileNotFound = 53;
inline constexpr int kErrorInputPastEnd = 62;
inline constexpr int kErrorFileAccess = 75;
inline constexpr int kErrorPathNotFound = 76;
std::string_view ErrorDescription(int number);

// An open datafile being read row by row.
class CompositeFile {
 public:
  bool Open(const std::string& path);
  bool is_open() const { return lines_.is_open(); }
  void Close() { lines_.Close(); }
  const DatafileError& error() const { return error_; }
  // The text of a column (1-68) of the row read last, as split from its line: valid until the
  // next read. Lets a writer copy a field that is already in the written form.
  std::string_view FieldText(int column) const {
    const auto i = static_cast<std::size_t>(column - 1);
    if (quoted_) return fields_[i];
    return FieldBetween(line_, i == 0 ? 0 : ends_[i - 1] + 1, ends_[i]);
  }

 private:
  friend bool ReadCompositeHeader(CompositeFile& file);
  friend bool ReadCompositeRow(CompositeFile& file, CompositeRow& row, const ColumnSet& wanted);
  friend bool ReadCompositeColumn(CompositeFile& file, CompositeRow& row, int column);
  bool NextLine(std::string_view& line);
  void Fail(int number, std::string detail);

  LineReader lines_;
  std::size_t line_number_ = 0;
  DatafileError error_;
  // The row read last: a plain line keeps where its fields end and cuts a field out only when it
  // is asked for (most rows are read for a few columns); a line with quotes is split whole.
  std::string_view line_;
  std::array<std::uint32_t, kCompositeColumnCount> ends_{};
  bool quoted_ = false;
  std::array<std::string_view, kCompositeColumnCount> fields_{};
};

// Closes a datafile whose reader is kept for the next one, however the work on it ends.
struct CloseOnReturn {
  CompositeFile& file;
  ~CloseOnReturn() { file.Close(); }
};

// Reads and drops the header line, whatever its texts. False (error 62) for an empty file.
bool ReadCompositeHeader(CompositeFile& file);
// Reads the next row into `row`. False at the end of the file, and also on a malformed row (other
// than 68 fields, text in a numeric column, an integer out of range), which file.error() then
// names. Blank lines are passed over. An empty numeric field reads as 0, as it always has.
bool ReadCompositeRow(CompositeFile& file, CompositeRow& row);
// The same converting only the `wanted` columns: the others are still counted, but neither
// converted nor checked, and keep what the row held before. A writer asks for the columns it
// writes, so text in a column that goes into none of its files does not hold up those files.
bool ReadCompositeRow(CompositeFile& file, CompositeRow& row, const ColumnSet& wanted);
// Converts one more column (1-68) of the row read last, one that was left out of `wanted`. False,
// with file.error() naming line and column, when its text does not fit the column.
bool ReadCompositeColumn(CompositeFile& file, CompositeRow& row, int column);

}  // namespace corvanet
