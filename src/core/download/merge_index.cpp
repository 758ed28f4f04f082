#include "core/download/merge_index.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <utility>
#include <vector>

#include "core/download/retrieve.h"
#include "core/platform/files.h"
#include "core/platform/line_reader.h"
#include "core/state/log.h"

namespace corvanet {

namespace {

constexpr std::string_view kFirstLine = "Corvanet merge index 2";
// An index written before the base copies' last dates were kept: its entries hold all else.
constexpr std::string_view kFormerFirstLine = "Corvanet merge index 1";

// One line per datafile: a checksum of the rest of the line, the numbers, the last date, the base
// copy's last date (empty when unknown), then the datafile's path, which may hold commas of its
// own and so comes last.
constexpr std::size_t kChecksumDigits = 16;

// FNV-1a: a damaged or hand-edited line must not pass for an entry.
std::uint64_t Checksum(std::string_view text) {
  std::uint64_t hash = 14695981039346656037ULL;
  for (const char c : text) {
    hash ^= static_cast<unsigned char>(c);
    hash *= 1099511628211ULL;
  }
  return hash;
}

template <typename Number>
bool TakeNumber(std::string_view& text, Number& value) {
  const std::size_t comma = text.find(',');
  if (comma == std::string_view::npos) return false;
  const auto [end, error] = std::from_chars(text.data(), text.data() + comma, value);
  if (error != std::errc() || end != text.data() + comma) return false;
  text.remove_prefix(comma + 1);
  return true;
}

bool IsDate(std::string_view text) {
  return text.size() == 8 &&
         std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

bool ParseLine(std::string_view line, bool with_base_last_date, std::string& path,
               MergedPrefix& prefix) {
  std::uint64_t checksum = 0;
  const char* digits_end = line.data() + std::min(line.size(), kChecksumDigits);
  const auto [end, error] = std::from_chars(line.data(), digits_end, checksum, 16);
  if (error != std::errc() || end != line.data() + kChecksumDigits ||
      line.size() <= kChecksumDigits || line[kChecksumDigits] != ',') {
    return false;
  }
  line.remove_prefix(kChecksumDigits + 1);
  if (Checksum(line) != checksum) return false;
  FileIdentity& base = prefix.base;
  FileIdentity& datafile = prefix.datafile;
  const bool numbers = TakeNumber(line, prefix.base_bytes) && TakeNumber(line, prefix.base_lines) &&
                       TakeNumber(line, prefix.field_commas) &&
                       TakeNumber(line, prefix.datafile_bytes) && TakeNumber(line, base.device) &&
                       TakeNumber(line, base.inode) && TakeNumber(line, base.size) &&
                       TakeNumber(line, base.modified_ns) && TakeNumber(line, base.changed_ns) &&
                       TakeNumber(line, datafile.device) && TakeNumber(line, datafile.inode) &&
                       TakeNumber(line, datafile.size) && TakeNumber(line, datafile.modified_ns) &&
                       TakeNumber(line, datafile.changed_ns);
  if (!numbers || line.size() < 10 || line[8] != ',' || !IsDate(line.substr(0, 8))) return false;
  prefix.last_date.assign(line.substr(0, 8));
  line.remove_prefix(9);
  prefix.base_last_date.clear();
  if (with_base_last_date) {
    const std::size_t comma = line.find(',');
    if (comma == std::string_view::npos || (comma != 0 && !IsDate(line.substr(0, comma)))) {
      return false;
    }
    prefix.base_last_date.assign(line.substr(0, comma));
    line.remove_prefix(comma + 1);
  }
  path.assign(line);
  return prefix.base_lines >= 2;
}

template <typename Number>
void AppendNumber(std::string& line, Number value) {
  char digits[24];
  const auto [end, error] = std::to_chars(std::begin(digits), std::end(digits), value);
  line.append(digits, end);
  line += ',';
}

}  // namespace

MergeIndex::MergeIndex(Session& session)
    : session_(session), path_(BaseFolder(session) + std::string(kFileName)) {
  session_.merge_index = this;
  LineReader reader;
  if (!reader.Open(path_)) return;
  std::string_view line;
  const bool read = reader.Next(line);
  const bool with_base_last_date = read && line == kFirstLine;
  if (!with_base_last_date && !(read && line == kFormerFirstLine)) {
    Log(session, "MergeIndex - " + path_ + " is not a merge index; every datafile is read whole");
    changed_ = true;
    return;
  }
  int number = 1;
  int garbled = 0;
  std::string path;
  MergedPrefix prefix;
  while (reader.Next(line)) {
    ++number;
    if (ParseLine(line, with_base_last_date, path, prefix)) {
      entries_.insert_or_assign(path, prefix);
    } else if (garbled++ == 0) {
      Log(session, "MergeIndex - " + path_ + " line " + std::to_string(number) +
                       " is garbled; its datafile is read whole");
    }
  }
  changed_ = garbled > 0 || reader.failed() || !with_base_last_date;
}

MergeIndex::~MergeIndex() {
  session_.merge_index = nullptr;
}

const MergedPrefix* MergeIndex::Match(const std::string& datafile_path,
                                      const std::optional<FileIdentity>& base,
                                      const std::optional<FileIdentity>& datafile) {
  ++asked_;
  const auto found = entries_.find(datafile_path);
  if (found == entries_.end()) return nullptr;
  const MergedPrefix& entry = found->second;
  // The datafile's offset is checked where it is taken (FileRewriter::TakeAsWritten).
  if (base != entry.base || datafile != entry.datafile || entry.base_bytes > entry.base.size) {
    return nullptr;
  }
  return &entry;
}

const std::string* MergeIndex::BaseLastDate(const std::string& datafile_path) const {
  const auto found = entries_.find(datafile_path);
  if (found == entries_.end() || found->second.base_last_date.empty()) return nullptr;
  return &found->second.base_last_date;
}

void MergeIndex::Put(const std::string& datafile_path, MergedPrefix prefix) {
  const auto [entry, added] = entries_.try_emplace(datafile_path, prefix);
  if (!added && entry->second == prefix) return;
  entry->second = std::move(prefix);
  changed_ = true;
}

void MergeIndex::Forget(const std::string& datafile_path) {
  if (entries_.erase(datafile_path) > 0) changed_ = true;
}

bool MergeIndex::Save() {
  if (asked_ > 0) {
    Log(session_, "MergeIndex - " + std::to_string(resumed_) + " of " + std::to_string(asked_) +
                      " merge(s) started where the last merge of their datafile stopped");
  }
  if (!changed_) return true;
  // In the order of the datafiles' paths, so one state of the files gives one index.
  std::vector<const std::pair<const std::string, MergedPrefix>*> sorted;
  sorted.reserve(entries_.size());
  for (const auto& entry : entries_) sorted.push_back(&entry);
  std::sort(sorted.begin(), sorted.end(), [](auto* a, auto* b) { return a->first < b->first; });
  AtomicFileWriter file(path_);
  file.WriteLine(kFirstLine);
  std::string line;
  for (const auto* entry : sorted) {
    const auto& [path, prefix] = *entry;
    line.clear();
    AppendNumber(line, prefix.base_bytes);
    AppendNumber(line, prefix.base_lines);
    AppendNumber(line, prefix.field_commas);
    AppendNumber(line, prefix.datafile_bytes);
    for (const FileIdentity* identity : {&prefix.base, &prefix.datafile}) {
      AppendNumber(line, identity->device);
      AppendNumber(line, identity->inode);
      AppendNumber(line, identity->size);
      AppendNumber(line, identity->modified_ns);
      AppendNumber(line, identity->changed_ns);
    }
    line += prefix.last_date;
    line += ',';
    line += prefix.base_last_date;
    line += ',';
    line += path;
    char checksum[kChecksumDigits + 1];
    std::snprintf(checksum, sizeof checksum, "%016llx",
                  static_cast<unsigned long long>(Checksum(line)));
    file.Write(checksum);
    file.Write(",");
    file.WriteLine(line);
  }
  if (!file.Commit()) return false;
  changed_ = false;
  return true;
}

}  // namespace corvanet
