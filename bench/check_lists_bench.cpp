// The list check against a 5,000-record master file and five 1,000-issue lists: the master file
// read once into a set, against reading it again for every issue. Both rewrite the same files; the
// program says so, and prints both times and their ratio.
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <random>
#include <sstream>
#include <string>

#include "core/download/check_lists.h"
#include "core/platform/field_reader.h"
#include "core/platform/files.h"
#include "core/platform/headless_shell.h"
#include "core/state/session.h"

namespace {

using namespace corvanet;
namespace fs = std::filesystem;

constexpr int kMasterRecords = 5000;
constexpr int kLists = 5;
constexpr int kIssuesPerList = 1000;

std::string Symbol(int i) {
  return "$S" + std::to_string(i);
}

void WriteMaster(const std::string& path) {
  AtomicFileWriter writer(path);
  for (int i = 0; i < kMasterRecords; ++i) {
    writer.WriteLine("Composite " + std::to_string(i) + " (Note)," + Symbol(i));
  }
  writer.Commit();
}

// Issues picked across the master file; about one in fifty names a symbol the master lacks.
void WriteLists(const std::string& folder) {
  std::mt19937 random(42);
  std::uniform_int_distribution<int> pick(0, kMasterRecords - 1);
  for (int n = 1; n <= kLists; ++n) {
    AtomicFileWriter writer(folder + "Download" + std::to_string(n) + ".csv");
    writer.WriteLine("eSignal,eSignal");
    for (const char* period : {"Daily", "Weekly", "Monthly", "Quarterly"}) {
      writer.WriteLine(std::string(period) + "Interval,1");
    }
    for (int i = 0; i < kIssuesPerList; ++i) {
      const int chosen = pick(random);
      const std::string symbol = chosen % 50 == 0 ? "$GONE" + std::to_string(i) : Symbol(chosen);
      writer.WriteLine("Composite " + std::to_string(chosen) + "," + symbol);
    }
    writer.Commit();
  }
}

// The check as first written: the master file is opened and read from its start for every issue.
void NaiveCheckLists(const std::string& folder, const std::string& master_path) {
  for (int n = 1; n <= kLists; ++n) {
    const std::string list_path = folder + "Download" + std::to_string(n) + ".csv";
    FieldReader list(list_path);
    AtomicFileWriter temp(folder + "Temp.csv");
    std::string first;
    std::string second;
    for (int i = 0; i < 5 && list.ReadRecord(first, second); ++i) {
      temp.WriteLine(first + "," + second);
    }
    while (list.ReadRecord(first, second)) {
      FieldReader master(master_path);
      std::string name;
      std::string symbol;
      bool found = false;
      while (!found && master.ReadRecord(name, symbol)) found = symbol == second;
      if (found) temp.WriteLine(first + "," + second);
    }
    temp.Commit();
    CopyFileReplacing(folder + "Temp.csv", list_path);
  }
}

std::string ListsContent(const std::string& folder) {
  std::string all;
  for (int n = 1; n <= kLists; ++n) {
    all += ReadWholeFile(folder + "Download" + std::to_string(n) + ".csv").value_or("");
  }
  return all;
}

template <typename F>
double Seconds(F&& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

}  // namespace

int main() {
  const fs::path root = fs::temp_directory_path() / "corvanet-check-lists-bench";
  fs::remove_all(root);
  fs::create_directories(root);
  const std::string folder = root.string() + "/";
  const std::string master = folder + "Masterfile2.csv";
  WriteMaster(master);

  std::ostringstream messages;
  HeadlessShell shell(messages, false);
  SystemHttpClient http;
  ManualClock clock;
  Session session(shell, http, clock);

  WriteLists(folder);
  const double naive = Seconds([&] { NaiveCheckLists(folder, master); });
  const std::string naive_result = ListsContent(folder);

  WriteLists(folder);
  const double hashed = Seconds([&] { CheckLists(session, folder, master); });
  const std::string hashed_result = ListsContent(folder);

  std::printf("master records %d, lists %d x %d issues\n", kMasterRecords, kLists, kIssuesPerList);
  std::printf("rescan per issue: %.3f s\n", naive);
  std::printf("one read, hash set: %.4f s\n", hashed);
  std::printf("ratio: %.0fx\n", hashed > 0 ? naive / hashed : 0.0);
  std::printf("same list files: %s\n", naive_result == hashed_result ? "yes" : "NO");
  fs::remove_all(root);
  return naive_result == hashed_result ? 0 : 1;
}
