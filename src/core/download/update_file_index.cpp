#include "core/download/update_file_index.h"

#include <algorithm>

#include "core/platform/line_reader.h"
#include "core/platform/text.h"

namespace corvanet {

namespace {
constexpr std::size_t kSymbolWidth = 15;
constexpr std::size_t kRowStart = 16;  // after the symbol and one separator character
constexpr std::uint64_t kMostReserved = 64 * 1024 * 1024;

bool Belongs(std::string_view line_symbol, std::string_view web_symbol) {
  // A one-character symbol has no shortened form: blank symbols belong to nobody.
  return line_symbol == web_symbol ||
         (web_symbol.size() > 1 && line_symbol == web_symbol.substr(1));
}
}  // namespace

bool HasRowDate(std::string_view row) {
  const std::string_view date = RowDate(row);
  return date.size() == 8 &&
         std::all_of(date.begin(), date.end(), [](char c) { return c >= '0' && c <= '9'; });
}

void UpdateFileIndex::Clear() {
  rows_by_symbol_.clear();
  rows_text_.clear();
  last_symbol_.clear();
  garbled_lines_ = first_garbled_line_ = 0;
  row_commas_ = std::string_view::npos;
  loaded_ = false;
  kept_ = false;
}

bool UpdateFileIndex::Load(const std::string& path) {
  Clear();
  LineReader lines;
  if (!lines.Open(path)) return false;
  // The rows are most of the file: one allocation for them, instead of a copy at every doubling
  // into memory the system must first hand over page by page. An eighth more, so that the next
  // period's file, of about the same size, fits in the same memory. Bounded, as the file comes
  // from the service.
  if (const auto identity = lines.identity(); identity && identity->size > rows_text_.capacity()) {
    rows_text_.reserve(static_cast<std::size_t>(
        std::min<std::uint64_t>(identity->size + identity->size / 8, kMostReserved)));
  }
  std::string_view line;
  int number = 0;
  while (lines.Next(line)) {
    ++number;
    const std::string_view symbol = Trim(line.substr(0, kSymbolWidth));
    last_symbol_.assign(symbol);
    const std::string_view row =
        line.size() > kRowStart ? Trim(line.substr(kRowStart)) : std::string_view();
    if (!HasRowDate(row)) {
      if (!Trim(line).empty() && garbled_lines_++ == 0) first_garbled_line_ = number;
      if (symbol.empty()) continue;
    } else if (row_commas_ == std::string_view::npos) {
      row_commas_ = CountChar(row, ',');
    }
    rows_by_symbol_[std::string(symbol)].push_back({number, rows_text_.size(), row.size()});
    rows_text_.append(row);
  }
  loaded_ = !lines.failed();
  return loaded_;
}

std::vector<UpdateRow> UpdateFileIndex::RowsFor(std::string_view web_symbol) const {
  static const std::vector<Line> kNone;
  const auto find = [this](std::string_view symbol) -> const std::vector<Line>& {
    const auto it = rows_by_symbol_.find(std::string(symbol));
    return it == rows_by_symbol_.end() ? kNone : it->second;
  };
  const std::vector<Line>& own = find(web_symbol);
  const std::vector<Line>& shortened = web_symbol.size() > 1 ? find(web_symbol.substr(1)) : kNone;
  // Merge the two lists by line number, as a scan of the file would meet them.
  std::vector<UpdateRow> rows;
  std::size_t a = 0;
  std::size_t b = 0;
  while (rows.size() < kUpdateSlots && (a < own.size() || b < shortened.size())) {
    const bool take_own =
        b >= shortened.size() || (a < own.size() && own[a].number < shortened[b].number);
    const Line& line = take_own ? own[a++] : shortened[b++];
    rows.push_back({std::string_view(rows_text_).substr(line.offset, line.size), line.number});
  }
  return rows;
}

bool UpdateFileIndex::EndsOnOtherSymbol(std::string_view web_symbol) const {
  return RowsFor(web_symbol).size() < kUpdateSlots && !Belongs(last_symbol_, web_symbol);
}

}  // namespace corvanet
