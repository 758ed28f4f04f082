#include "core/stats/composite_row.h"

#include <cmath>
#include <limits>

#include "core/platform/text.h"
#include "core/stats/field_split.h"

namespace corvanet {

namespace {

using R = CompositeRow;

enum class ColumnType { kText, kInteger, kDouble, kLoose };

struct ColumnDef {
  std::string_view name;
  ColumnType type;
  std::string R::*text = nullptr;
  std::int32_t R::*integer = nullptr;
  double R::*real = nullptr;
  int loose = -1;  // index into FV
};

constexpr ColumnDef Text(std::string_view name, std::string R::*m) {
  return {name, ColumnType::kText, m, nullptr, nullptr, -1};
}
constexpr ColumnDef Int(std::string_view name, std::int32_t R::*m) {
  return {name, ColumnType::kInteger, nullptr, m, nullptr, -1};
}
constexpr ColumnDef Real(std::string_view name, double R::*m) {
  return {name, ColumnType::kDouble, nullptr, nullptr, m, -1};
}
constexpr ColumnDef Loose(std::string_view name, int index) {
  return {name, ColumnType::kLoose, nullptr, nullptr, nullptr, index};
}

// The datafile's columns in file order.
constexpr ColumnDef kColumns[kCompositeColumnCount] = {
    Text("Period", &R::Period),
    Int("RowDate", &R::RowDate),
    Text("", &R::RowDateText),
    Real("OpenPx", &R::OpenPx),
    Real("HighPx", &R::HighPx),
    Real("LowPx", &R::LowPx),
    Real("ClosePx", &R::ClosePx),
    Real("UpperTrendChannel", &R::UpperTrendChannel),
    Real("Pivot", &R::Pivot),
    Real("LowerTrendChannel", &R::LowerTrendChannel),
    Int("UpTrends", &R::UpTrends),
    Int("NewUpTrends", &R::NewUpTrends),
    Int("DownTrends", &R::DownTrends),
    Int("NewDownTrends", &R::NewDownTrends),
    Real("TotalVolume", &R::TotalVolume),
    Int("Advances", &R::Advances),
    Int("Declines", &R::Declines),
    Real("UpVolume", &R::UpVolume),
    Real("DownVolume", &R::DownVolume),
    Int("NewHighs", &R::NewHighs),
    Int("NewLows", &R::NewLows),
    Int("Traded", &R::Traded),
    Int("Unchanged", &R::Unchanged),
    Real("PercentAbove200ma", &R::PercentAbove200ma),
    Real("PercentAbove30ma", &R::PercentAbove30ma),
    Real("PercentAbove18ma", &R::PercentAbove18ma),
    Real("PercentAbove9ma", &R::PercentAbove9ma),
    Real("PercentAbove4ma", &R::PercentAbove4ma),
    Int("Above200ma", &R::Above200ma),
    Int("Below200ma", &R::Below200ma),
    Int("Equal200ma", &R::Equal200ma),
    Int("Above30ma", &R::Above30ma),
    Int("Below30ma", &R::Below30ma),
    Int("Equal30ma", &R::Equal30ma),
    Int("Above18ma", &R::Above18ma),
    Int("Below18ma", &R::Below18ma),
    Int("Equal18ma", &R::Equal18ma),
    Int("Above9ma", &R::Above9ma),
    Int("Below9ma", &R::Below9ma),
    Int("Equal9ma", &R::Equal9ma),
    Int("Above4ma", &R::Above4ma),
    Int("Below4ma", &R::Below4ma),
    Int("Equal4ma", &R::Equal4ma),
    Int("QNewHighs", &R::QNewHighs),
    Int("QNewLows", &R::QNewLows),
    Int("NewHighs1stDay", &R::NewHighs1stDay),
    Int("NewLows1stDay", &R::NewLows1stDay),
    Int("QNewHighs1stDay", &R::QNewHighs1stDay),
    Int("QNewLows1stDay", &R::QNewLows1stDay),
    Real("EqWtOpen", &R::EqWtOpen),
    Real("EqWtHigh", &R::EqWtHigh),
    Real("EqWtLow", &R::EqWtLow),
    Real("EqWtClose", &R::EqWtClose),
    Real("TradeVolume", &R::TradeVolume),
    Loose("FV2", 0),
    Loose("FV3", 1),
    Loose("FV4", 2),
    Loose("FV5", 3),
    Loose("FV6", 4),
    Loose("FV7", 5),
    Loose("FV8", 6),
    Loose("FV9", 7),
    Loose("FV10", 8),
    Loose("FV11", 9),
    Loose("FV12", 10),
    Loose("FV13", 11),
    Loose("FV14", 12),
    Loose("FV15", 13),
};

// Stores one field in its member; 0, or the error number when the text does not fit the type.
int ConvertField(const ColumnDef& def, std::string_view field, CompositeRow& row) {
  if (def.type == ColumnType::kText) {
    (row.*def.text).assign(field);
    return 0;
  }
  if (def.type == ColumnType::kInteger) {
    std::int64_t whole = 0;
    double number = 0;
    if (field.empty()) {
      whole = 0;  // an empty numeric field has always read as 0
    } else if (!ParseWhole(field, whole)) {
      if (!ParseDecimal(field, number)) return kErrorTypeMismatch;
      // A count written with decimals is rounded as the classic reader rounds (half to even).
      const double rounded = std::nearbyint(number);
      if (!(rounded >= std::numeric_limits<std::int32_t>::min() &&
            rounded <= std::numeric_limits<std::int32_t>::max())) {
        return kErrorOverflow;
      }
      whole = static_cast<std::int64_t>(rounded);
    }
    if (whole < std::numeric_limits<std::int32_t>::min() ||
        whole > std::numeric_limits<std::int32_t>::max()) {
      return kErrorOverflow;
    }
    row.*def.integer = static_cast<std::int32_t>(whole);
    return 0;
  }
  double number = 0;
  const bool numeric = field.empty() || ParseDecimal(field, number);
  if (def.type == ColumnType::kDouble) {
    if (!numeric) return kErrorTypeMismatch;
    row.*def.real = number;
    return 0;
  }
  LooseValue& loose = row.FV[static_cast<std::size_t>(def.loose)];
  loose.is_number = numeric;
  loose.number = numeric ? number : 0;
  if (numeric) {
    loose.text.clear();
  } else {
    loose.text.assign(field);
  }
  return 0;
}

std::string Quoted(std::string_view text) {
  std::string quoted = "\"";
  quoted += text.substr(0, 40);
  quoted += '"';
  return quoted;
}

}  // namespace

bool StatisticValue::ToDouble(double& out) const {
  if (kind == Kind::kText) return false;
  out = kind == Kind::kEmpty ? 0.0 : number;
  return true;
}

int FindColumn(std::string_view name) {
  if (name.empty()) return 0;
  for (int i = 0; i < kCompositeColumnCount; ++i) {
    if (kColumns[i].name == name) return i + 1;
  }
  return 0;
}

std::string_view ColumnName(int column) {
  return column >= 1 && column <= kCompositeColumnCount ? kColumns[column - 1].name : "";
}

StatisticValue ColumnValue(const CompositeRow& row, int column) {
  StatisticValue value;
  if (column < 1 || column > kCompositeColumnCount) return value;
  const ColumnDef& def = kColumns[column - 1];
  switch (def.type) {
    case ColumnType::kText:
      value.kind = StatisticValue::Kind::kText;
      value.text = row.*def.text;
      break;
    case ColumnType::kInteger:
      value.kind = StatisticValue::Kind::kInteger;
      value.number = row.*def.integer;
      break;
    case ColumnType::kDouble:
      value.kind = StatisticValue::Kind::kDouble;
      value.number = row.*def.real;
      break;
    case ColumnType::kLoose: {
      const LooseValue& loose = row.FV[static_cast<std::size_t>(def.loose)];
      value.kind = loose.is_number ? StatisticValue::Kind::kDouble : StatisticValue::Kind::kText;
      value.number = loose.number;
      value.text = loose.text;
      break;
    }
  }
  return value;
}

bool IsIntegerColumn(int column) {
  return column >= 1 && column <= kCompositeColumnCount &&
         kColumns[column - 1].type == ColumnType::kInteger;
}

bool IsTextColumn(int column) {
  return column >= 1 && column <= kCompositeColumnCount &&
         kColumns[column - 1].type == ColumnType::kText;
}

const std::int32_t* IntegerField(const CompositeRow& row, int column) {
  if (column < 1 || column > kCompositeColumnCount) return nullptr;
  const ColumnDef& def = kColumns[column - 1];
  return def.type == ColumnType::kInteger ? &(row.*def.integer) : nullptr;
}

const double* DoubleField(const CompositeRow& row, int column) {
  if (column < 1 || column > kCompositeColumnCount) return nullptr;
  const ColumnDef& def = kColumns[column - 1];
  return def.type == ColumnType::kDouble ? &(row.*def.real) : nullptr;
}

StatisticValue GetStatisticValue(const CompositeRow& row, std::string_view name) {
  return ColumnValue(row, FindColumn(name));
}

std::string_view ErrorDescription(int number) {
  switch (number) {
    case kErrorOverflow:
      return "Overflow";
    case kErrorTypeMismatch:
      return "Type mismatch";
    case kErrorFileNotFound:
      return "File not found";
    case kErrorInputPastEnd:
      return "Input past end of file";
    case kErrorFileAccess:
      return "Path/File access error";
    case kErrorPathNotFound:
      return "Path not found";
    default:
      return "Application-defined or object-defined error";
  }
}

std::string DatafileError::Text() const {
  std::string text(description);
  if (!detail.empty()) text += " (" + detail + ")";
  return text;
}

std::string ErrorTrapLine(std::string_view procedure, const DatafileError& error,
                          std::string_view datafile, std::string_view period) {
  std::string line(procedure);
  line += " Error # ";
  line += NumberText(error.number);
  line += " - ";
  line += error.Text();
  line += " - ";
  line += datafile;
  line += " - ";
  line += period;
  return line;
}

bool CompositeFile::Open(const std::string& path) {
  line_number_ = 0;
  error_ = {};
  if (lines_.Open(path)) return true;
  Fail(kErrorFileNotFound, path);
  return false;
}

void CompositeFile::Fail(int number, std::string detail) {
  error_.number = number;
  error_.description = ErrorDescription(number);
  error_.detail = std::move(detail);
}

bool CompositeFile::NextLine(std::string_view& line) {
  while (lines_.Next(line)) {
    ++line_number_;
    if (!Trim(line).empty()) return true;
  }
  if (lines_.failed())
    Fail(kErrorFileAccess, "read error after line " + std::to_string(line_number_));
  return false;
}

bool ReadCompositeHeader(CompositeFile& file) {
  std::string_view line;
  if (file.NextLine(line)) return true;
  if (!file.error_.has_error()) file.Fail(kErrorInputPastEnd, "no header line");
  return false;
}

bool ReadCompositeRow(CompositeFile& file, CompositeRow& row) {
  return ReadCompositeRow(file, row, AllColumns());
}

bool ReadCompositeRow(CompositeFile& file, CompositeRow& row, const ColumnSet& wanted) {
  std::string_view line;
  if (!file.NextLine(line)) return false;
  std::size_t count = 0;
  file.line_ = line;
  file.quoted_ = line.size() > UINT32_MAX || !FindFieldEnds(line, file.ends_, count);
  if (file.quoted_) count = SplitFieldsInPlace(line, file.fields_);
  // Built only when a row is refused: reading a good row allocates nothing.
  const auto where = [&] { return "line " + std::to_string(file.line_number_); };
  if (count != kCompositeColumnCount) {
    const bool short_row = count < kCompositeColumnCount;
    file.Fail(short_row ? kErrorInputPastEnd : kErrorTypeMismatch,
              where() + " holds " + std::to_string(count) + (short_row ? " of " : " fields, not ") +
                  std::to_string(kCompositeColumnCount) + (short_row ? " fields" : ""));
    return false;
  }
  for (int i = 0; i < kCompositeColumnCount; ++i) {
    if (wanted.test(static_cast<std::size_t>(i)) && !ReadCompositeColumn(file, row, i + 1)) {
      return false;
    }
  }
  return true;
}

bool ReadCompositeColumn(CompositeFile& file, CompositeRow& row, int column) {
  if (column < 1 || column > kCompositeColumnCount) return true;
  const ColumnDef& def = kColumns[column - 1];
  const std::string_view field = file.FieldText(column);
  const int error = ConvertField(def, field, row);
  if (error == 0) return true;
  file.Fail(error, "line " + std::to_string(file.line_number_) + ", column " +
                       std::to_string(column) + " " + std::string(def.name) + ": " + Quoted(field));
  return false;
}

}  // namespace corvanet
