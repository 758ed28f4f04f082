// `advance`: new bars at the end of every daily datafile (and a period bar wherever a week, month
// or quarter completes), then fresh update files. Only the state files are read; the datafiles are
// appended to, never read or rewritten.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <ostream>
#include <system_error>

#include "core/platform/files.h"
#include "demo_service/commands.h"
#include "demo_service/data_tree.h"
#include "demo_service/options.h"

namespace corvanet::demo {

namespace {

namespace fs = std::filesystem;

// Appends each new row to every copy of the composite's datafile (one, when the data sets share
// it through a link) and keeps the newest rows.
class AppendedDatafiles final : public BarSink {
 public:
  AppendedDatafiles(const std::array<std::vector<std::string>, kPeriodCount>& paths,
                    std::array<RowTail, kPeriodCount>& tails)
      : tails_(tails) {
    for (std::size_t p = 0; p < paths.size(); ++p) {
      for (const std::string& path : paths[p]) {
        std::FILE* file = std::fopen(path.c_str(), "ab");
        if (file == nullptr)
          throw RunError("cannot append to " + path + ": " + std::strerror(errno));
        files_[p].push_back({file, path});
      }
    }
  }
  AppendedDatafiles(const AppendedDatafiles&) = delete;
  AppendedDatafiles& operator=(const AppendedDatafiles&) = delete;
  ~AppendedDatafiles() override {
    for (auto& list : files_) {
      for (auto& [file, path] : list) {
        if (file != nullptr) std::fclose(file);
      }
    }
  }

  void Bar(Period period, const Row& row) override {
    const std::string_view text = text_.Format(row);
    tails_[static_cast<std::size_t>(period)].Push(text);
    line_.assign(text);
    line_ += kLineEnd;
    for (auto& [file, path] : files_[static_cast<std::size_t>(period)]) {
      std::fwrite(line_.data(), 1, line_.size(), file);
    }
  }

  void Close() {
    for (auto& list : files_) {
      for (auto& [file, path] : list) {
        const bool ok = std::ferror(file) == 0;
        const bool closed = std::fclose(file) == 0;
        file = nullptr;
        if (!ok || !closed) throw RunError("cannot append to " + path);
      }
    }
  }

 private:
  std::array<std::vector<std::pair<std::FILE*, std::string>>, kPeriodCount> files_;
  std::array<RowTail, kPeriodCount>& tails_;
  RowText text_;
  std::string line_;  // reused for every row
};

// The composite's datafiles in every data set that holds it, each file once.
std::array<std::vector<std::string>, kPeriodCount> DatafilePaths(const std::string& root,
                                                                 const Universe& universe,
                                                                 const Composite& composite) {
  std::array<std::vector<std::string>, kPeriodCount> paths;
  for (const Period period : kPeriods) {
    const std::string name = DatafileName(composite.service_symbol, period);
    const std::string home = DataSetFolder(root, kHomeDataSet) + name;
    if (!FileExists(home)) throw RunError("missing datafile " + home + " (run generate again)");
    auto& list = paths[static_cast<std::size_t>(period)];
    list.push_back(home);
    for (int d = 0; d < kDataSetCount; ++d) {
      if (d == kHomeDataSet || !universe.InDataSet(composite, d)) continue;
      const std::string copy = DataSetFolder(root, d) + name;
      std::error_code ec;
      if (FileExists(copy) && !fs::equivalent(home, copy, ec)) list.push_back(copy);
    }
  }
  return paths;
}

void Check(bool ok, const std::string& error) {
  if (!ok) throw RunError(error);
}

}  // namespace

int Advance(const std::vector<std::string>& args, std::ostream& out) {
  const Options options(args, {{"root"}, {"bars"}});
  const std::string root = RootFolder(options);
  const int bars = static_cast<int>(options.Integer("bars", 1, 1, 100000));
  if (!DirectoryExists(root)) throw RunError("the root folder " + root + " does not exist");

  std::string error;
  TreeInfo info;
  Check(LoadTreeInfo(root, info, error), error);
  const Universe universe(info.seed, info.composites);

  std::vector<std::array<RowTail, kPeriodCount>> tails(universe.composites().size());
  int day = 0;
  for (const Composite& composite : universe.composites()) {
    const std::string state_path = StateFilePath(root, composite.service_symbol);
    CompositeState state;
    Check(LoadState(state_path, state, error), error);
    AppendedDatafiles files(DatafilePaths(root, universe, composite), state.tails);
    day = state.model.last_day;
    for (int i = 0; i < bars; ++i) {
      day = NextWeekday(day);
      StepDay(composite, info.seed, day, state.model, files);
    }
    files.Close();
    Check(SaveState(state_path, state, error), error);
    tails[static_cast<std::size_t>(composite.id)] = state.tails;
  }

  for (int d = 0; d < kDataSetCount; ++d) {
    const std::string folder = DataSetFolder(root, d);
    for (const Period period : kPeriods) {
      Check(WriteUpdateFile(folder + UpdateFileName(period), universe, d, period, tails, error),
            error);
    }
  }
  out << "advanced " << universe.composites().size() << " composites by " << bars
      << (bars == 1 ? " bar" : " bars") << " to " << DateNumber(day) << "\n";
  return 0;
}

}  // namespace corvanet::demo
