#pragma once
// The classic comma-separated field reader. Fields end at a comma or at the end of a line; an
// unquoted field loses its surrounding blanks; a field in double quotes keeps what is between the
// quotes, commas and blanks included. Reading N fields takes them across line ends, as the classic
// reader does: a line with one field too many leaves that field for the next read, a line with one
// too few takes the next line's first field. Blank lines hold no field and are passed over.
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "core/platform/line_reader.h"

namespace corvanet {

enum class QuoteRule {
  kClassic,              // a quoted field ends at the next quote
  kDoubledQuoteEscapes,  // within quotes, "" stands for one quote (the settings file's own texts)
};

// Splits one line into its fields (quotes removed, unquoted fields trimmed). Appends to `fields`.
void SplitFields(std::string_view line, std::vector<std::string>& fields,
                 QuoteRule quotes = QuoteRule::kClassic);
// The fields of one line as a new vector.
std::vector<std::string> SplitFields(std::string_view line);

class FieldReader {
 public:
  FieldReader() = default;
  explicit FieldReader(const std::string& path) { Open(path); }

  bool Open(const std::string& path);
  bool is_open() const { return lines_.is_open(); }
  void Close() {
    lines_.Close();
    pending_.clear();
    next_ = 0;
  }

  // True when no field is left in the file.
  bool AtEnd();
  // Reads the next field; false at the end of the file.
  bool ReadField(std::string& field);
  // Reads fields.size() fields; false (with the fields read so far filled in) when the file ends
  // first.
  bool ReadFields(std::span<std::string* const> fields);
  bool ReadRecord(std::string& first, std::string& second) {
    std::string* both[] = {&first, &second};
    return ReadFields(both);
  }
  // Drops the fields left on the current line, so the next read starts on a new line.
  void SkipRestOfLine() {
    pending_.clear();
    next_ = 0;
  }
  bool failed() const { return lines_.failed(); }

 private:
  bool LoadLine();

  LineReader lines_;
  std::vector<std::string> pending_;  // fields of the current line not yet read
  std::size_t next_ = 0;
};

}  // namespace corvanet
