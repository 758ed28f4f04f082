#include "core/platform/field_reader.h"

#include "core/platform/text.h"

namespace corvanet {

void SplitFields(std::string_view line, std::vector<std::string>& fields) {
  std::size_t pos = 0;
  for (;;) {
    while (pos < line.size() && (line[pos] == ' ' || line[pos] == '\t')) ++pos;
    if (pos < line.size() && line[pos] == '"') {
      const std::size_t close = line.find('"', pos + 1);
      const std::size_t stop = close == std::string_view::npos ? line.size() : close;
      fields.emplace_back(line.substr(pos + 1, stop - pos - 1));
      // Whatever stands between the closing quote and the next comma is not part of the field.
      pos = stop == line.size() ? stop : line.find(',', stop);
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
