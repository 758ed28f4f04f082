// `generate`: a fresh data tree, written composite by composite so only one composite's running
// values and the newest rows of each are in memory at any time.
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

// A Wednesday, so that advancing a few bars completes a week, then a month and a quarter. Fixed
// rather than today, so the same seed always gives the same files.
constexpr CivilDate kLastDay{2025, 6, 25};

// Writes the four new datafiles of one composite and keeps their newest rows.
class NewDatafiles final : public BarSink {
 public:
  NewDatafiles(const std::string& folder, const Composite& composite,
               std::array<RowTail, kPeriodCount>& tails)
      : tails_(tails) {
    for (const Period period : kPeriods) {
      AtomicFileWriter& out = writers_[static_cast<std::size_t>(period)];
      const std::string path = folder + DatafileName(composite.service_symbol, period);
      if (!out.Open(path)) throw RunError("cannot write " + path + ": " + out.error());
      out.WriteLine(DatafileHeader());
    }
  }

  void Bar(Period period, const Row& row) override {
    const std::string_view text = text_.Format(row);
    writers_[static_cast<std::size_t>(period)].WriteLine(text);
    tails_[static_cast<std::size_t>(period)].Push(text);
  }

  void Commit() {
    for (AtomicFileWriter& out : writers_) {
      if (!out.Commit()) throw RunError("cannot write " + out.target() + ": " + out.error());
    }
  }

 private:
  std::array<AtomicFileWriter, kPeriodCount> writers_;
  std::array<RowTail, kPeriodCount>& tails_;
  RowText text_;
};

// The data sets share one copy of a composite's files, as a service would; a copy only where the
// file system cannot link.
void LinkOrCopy(const std::string& from, const std::string& to) {
  std::error_code ec;
  fs::create_hard_link(from, to, ec);
  if (!ec) return;
  fs::copy_file(from, to, fs::copy_options::overwrite_existing, ec);
  if (ec) throw RunError("cannot write " + to + ": " + ec.message());
}

void PrepareRoot(const std::string& root) {
  std::error_code ec;
  fs::create_directories(root, ec);
  if (ec || !DirectoryExists(root)) {
    throw RunError("cannot create the root folder " + root + ": " +
                   (ec ? ec.message() : "not a folder"));
  }
  // Only what an earlier `generate` made is removed, so a smaller data set leaves no stale files.
  for (const std::string& old : {root + std::string(kServedTop), StateFolder(root)}) {
    fs::remove_all(old, ec);
    if (ec) throw RunError("cannot clear " + old + ": " + ec.message());
  }
  std::vector<std::string> folders = {StateFolder(root)};
  for (int d = 0; d < kDataSetCount; ++d) folders.push_back(DataSetFolder(root, d));
  for (const std::string& folder : folders) {
    fs::create_directories(folder, ec);
    if (ec) throw RunError("cannot create " + folder + ": " + ec.message());
  }
}

void Check(bool ok, const std::string& error) {
  if (!ok) throw RunError(error);
}

}  // namespace

int Generate(const std::vector<std::string>& args, std::ostream& out) {
  const Options options(args, {{"root"}, {"composites"}, {"years"}, {"seed"}, {"message-kind"}});
  const std::string root = RootFolder(options);
  TreeInfo info;
  info.composites = static_cast<int>(options.Integer("composites", 60, 1, 100000));
  const int years = static_cast<int>(options.Integer("years", 10, 1, 100));
  info.seed = options.Unsigned("seed", 1);
  const std::string kind = options.Text("message-kind", "0");
  if (!IsMessageKind(kind)) {
    throw UsageError("option --message-kind wants -1, 0, 1, empty or none, not '" + kind + "'");
  }

  PrepareRoot(root);
  const Universe universe(info.seed, info.composites);
  const int last_day = DaysFromCivil(kLastDay);
  const int first_day =
      WeekdayOnOrAfter(DaysFromCivil({kLastDay.year - years, kLastDay.month, kLastDay.day}) + 1);
  const std::string home = DataSetFolder(root, kHomeDataSet);

  std::vector<std::array<RowTail, kPeriodCount>> tails(universe.composites().size());
  std::string error;
  for (const Composite& composite : universe.composites()) {
    CompositeState state;
    state.model = StartModel(composite);
    NewDatafiles files(home, composite, state.tails);
    for (int day = first_day; day <= last_day; day = NextWeekday(day)) {
      StepDay(composite, info.seed, day, state.model, files);
    }
    files.Commit();
    Check(SaveState(StateFilePath(root, composite.service_symbol), state, error), error);
    for (int d = 0; d < kDataSetCount; ++d) {
      if (d == kHomeDataSet || !universe.InDataSet(composite, d)) continue;
      for (const Period period : kPeriods) {
        const std::string name = DatafileName(composite.service_symbol, period);
        LinkOrCopy(home + name, DataSetFolder(root, d) + name);
      }
    }
    tails[static_cast<std::size_t>(composite.id)] = state.tails;
  }

  for (int d = 0; d < kDataSetCount; ++d) {
    const std::string folder = DataSetFolder(root, d);
    Check(WriteMasterFile(folder + kDataSets[d].master_file, universe, d, error), error);
    for (const Period period : kPeriods) {
      Check(WriteUpdateFile(folder + UpdateFileName(period), universe, d, period, tails, error),
            error);
    }
    Check(WriteSystemMessage(folder + std::string(kSystemMessageFile), kind, error), error);
  }
  Check(SaveTreeInfo(root, info, error), error);

  out << "generated " << universe.composites().size() << " composites (" << info.composites
      << " in the standard data set), " << DateNumber(first_day) << " to " << DateNumber(last_day)
      << ", under " << root << kServedTop << "/\n";
  return 0;
}

}  // namespace corvanet::demo
