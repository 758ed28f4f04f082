#include "core/platform/field_reader.h"

#include "core/platform/text.h"

namespace corvanet {

namespace {

// The text of a quoted field that starts at `from` (after its opening quote); `close` becomes the
// place of its closing quote, or the line's end when there is none.
std::string QuotedField(std::string_view line, std::size_t from, QuoteRule quotes,
                        std::size_t& close) {
  close = line.find('"', from);
  if (quotes == QuoteRule::kClassic) {
    if (close == std::string_view::npos) close = line.size();
    return std::string(line.substr(from, close - from));
  }
  std::string field;
  while (close != std::string_view::npos && close + 1 < line.size() && line[close + 1] == '"') {
    field.append(line.substr(from, close + 1 - from));
    from = close + 2;
    close = line.find('"', from);
  }
  if (close == std::string_view::npos) close = line.size();
  field.append(line.substr(from, close - from));
  return field;
}

}  // namespace

void SplitFields(std::string_view line, std::vector<std::string>& fields, QuoteRule quotes) {
  std::size_t pos = 0;
  for (;;) {
    while (pos < line.size() && (line[pos] == ' ' || line[pos] == '\t')) ++pos;
    if (pos < line.size() && line[pos] == '"') {
      std::size_t close = 0;
      fields.push_back(QuotedField(line, pos + 1, quotes, close));
      // Whatever stands between the closing quote and the next comma is not part of the field.
      pos = close == line.size() ? close : line.find(',', close);
      if (pos == std::string_view::npos) return;
    } else {
      const std::size_t comma = line.find(',', pos);
      const std::size_t stop = comma == std::string_view::npos ? line.size() : comma;
      fields.emplace_back(Trim(line.substr(pos, stop - pos)));
      pos = stop;
    }
    if (pos >= line.size()) return;
    ++pos;  // past the comma; a comma at the very end leaves one empty field behind it
  }
}

std::vector<std::string> SplitFields(std::string_view line) {
  std::vector<std::string> fields;
  SplitFields(line, fields);
  return fields;
}

bool FieldReader::Open(const std::string& path) {
  pending_.clear();
  next_ = 0;
  return lines_.Open(path);
}

bool FieldReader::LoadLine() {
  std::string_view line;
  while (lines_.Next(line)) {
    if (Trim(line).empty()) continue;
    pending_.clear();
    next_ = 0;
    SplitFields(line, pending_);
    return true;
  }
  return false;
}

bool FieldReader::AtEnd() {
  return next_ >= pending_.size() && !LoadLine();
}

bool FieldReader::ReadField(std::string& field) {
  if (AtEnd()) return false;
  field = std::move(pending_[next_++]);
  return true;
}

bool FieldReader::ReadFields(std::span<std::string* const> fields) {
  for (std::string* field : fields) {
    if (!ReadField(*field)) {
      field->clear();
      return false;
    }
  }
  return true;
}

}  // namespace corvanet
