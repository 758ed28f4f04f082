#include "demo_service/data_tree.h"

#include <charconv>

#include "core/platform/files.h"
#include "core/platform/line_reader.h"
#include "core/platform/text.h"

namespace corvanet::demo {

namespace {

constexpr std::size_t kSymbolWidth = 15;

bool Commit(AtomicFileWriter& out, std::string& error) {
  if (out.Commit()) return true;
  error = "cannot write " + out.target() + ": " + out.error();
  return false;
}

bool Open(AtomicFileWriter& out, const std::string& path, std::string& error) {
  if (out.Open(path)) return true;
  error = "cannot write " + path + ": " + out.error();
  return false;
}

std::string TreeInfoPath(const std::string& root) {
  return StateFolder(root) + "universe.txt";
}

template <typename T>
bool ParseWhole(std::string_view text, T& value) {
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  return !text.empty() && result.ec == std::errc() && result.ptr == text.data() + text.size();
}

}  // namespace

std::string DataSetFolder(const std::string& root, int data_set) {
  return root + std::string(kServedTop) + "/" + kDataSets[data_set].folder + "/";
}

std::string DatafileName(std::string_view service_symbol, Period period) {
  return std::string(service_symbol) + PeriodName(period) + "-CompositeStats.csv";
}

std::string UpdateFileName(Period period) {
  return std::string("Update-") + PeriodName(period) + ".csv";
}

bool WriteMasterFile(const std::string& path, const Universe& universe, int data_set,
                     std::string& error) {
  AtomicFileWriter out;
  if (!Open(out, path, error)) return false;
  std::string line;
  for (const Composite& c : universe.composites()) {
    if (!universe.InDataSet(c, data_set)) continue;
    line = c.name;
    line += ',';
    line += c.list_symbol;
    out.WriteLine(line);
  }
  return Commit(out, error);
}

bool WriteUpdateFile(const std::string& path, const Universe& universe, int data_set, Period period,
                     const std::vector<std::array<RowTail, kPeriodCount>>& tails,
                     std::string& error) {
  AtomicFileWriter out;
  if (!Open(out, path, error)) return false;
  std::string line;
  for (int age = kUpdateRows; age >= 1; --age) {  // fifth-newest first
    for (const Composite& c : universe.composites()) {
      if (!universe.InDataSet(c, data_set)) continue;
      const RowTail& tail = tails[static_cast<std::size_t>(c.id)][static_cast<std::size_t>(period)];
      const int index = tail.size() - age;
      if (index < 0) continue;
      line = c.service_symbol;
      if (line.size() < kSymbolWidth) line.append(kSymbolWidth - line.size(), ' ');
      line += ' ';
      line += tail.at(index);
      out.WriteLine(line);
    }
  }
  return Commit(out, error);
}

bool IsMessageKind(std::string_view kind) {
  return kind == "-1" || kind == "0" || kind == "1" || kind == "empty" || kind == "none";
}

bool WriteSystemMessage(const std::string& path, std::string_view kind, std::string& error) {
  if (kind == "none") {
    RemoveFile(path);
    return true;
  }
  AtomicFileWriter out;
  if (!Open(out, path, error)) return false;
  out.WriteLine(kind == "empty" ? std::string_view() : kind);
  out.WriteLine("https://example.com/corvanet-demo");
  out.WriteLine("Welcome to the Corvanet demo data service.");
  if (kind == "1") out.WriteLine("News and tips are on the service's web page.");
  // The client names its current version where a message names the previous one.
  out.WriteLine("Corvanet 4 users can update at no charge.");
  out.WriteLine("exit");
  out.WriteLine("This line follows the end marker and is never shown.");
  return Commit(out, error);
}

bool SaveTreeInfo(const std::string& root, const TreeInfo& info, std::string& error) {
  AtomicFileWriter out;
  if (!Open(out, TreeInfoPath(root), error)) return false;
  out.WriteLine("seed " + std::to_string(info.seed));
  out.WriteLine("composites " + std::to_string(info.composites));
  return Commit(out, error);
}

bool LoadTreeInfo(const std::string& root, TreeInfo& info, std::string& error) {
  const std::string path = TreeInfoPath(root);
  LineReader in(path);
  if (!in.is_open()) {
    error = "no generated data under " + root + " (run generate first)";
    return false;
  }
  bool have_seed = false, have_count = false;
  std::string_view line;
  while (in.Next(line)) {
    if (StartsWith(line, "seed ")) {
      have_seed = ParseWhole(line.substr(5), info.seed);
    } else if (StartsWith(line, "composites ")) {
      have_count = ParseWhole(line.substr(11), info.composites) && info.composites > 0;
    }
  }
  if (!have_seed || !have_count) {
    error = path + " is damaged (run generate again)";
    return false;
  }
  return true;
}

}  // namespace corvanet::demo
