#include "support/test_support.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <thread>
#include <utility>

#include "core/platform/paths.h"
#include "support/child_process.h"

namespace corvanet::test {

namespace fs = std::filesystem;

TempDir::TempDir() {
  static std::atomic<int> counter{0};
  const fs::path root =
      fs::temp_directory_path() /
      ("corvanet-test-" + std::to_string(CurrentProcessId()) + "-" + std::to_string(counter++));
  fs::remove_all(root);
  fs::create_directories(root);
  path_ = root.string() + kSep;
}

std::string TempDir::operator/(std::string_view name) const {
  std::string path = path_ + std::string(name);
  std::replace(path.begin() + static_cast<std::ptrdiff_t>(path_.size()), path.end(), '/', kSep);
  return path;
}

TempDir::~TempDir() {
  std::error_code ec;
  // Tests may have made files read-only; make them removable again.
  for (auto it = fs::recursive_directory_iterator(path_, ec); !ec && it != fs::end(it);
       it.increment(ec)) {
    fs::permissions(it->path(), fs::perms::owner_all, fs::perm_options::add, ec);
  }
  fs::remove_all(path_, ec);
}

std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream content;
  content << in.rdbuf();
  return content.str();
}

void WriteFile(const std::string& path, std::string_view content) {
  const fs::path parent = fs::path(path).parent_path();
  if (!parent.empty()) fs::create_directories(parent);
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(content.data(), static_cast<std::streamsize>(content.size()));
}

void WriteLines(const std::string& path, const std::vector<std::string>& lines) {
  std::string content;
  for (const std::string& line : lines) content += line + "\r\n";
  WriteFile(path, content);
}

std::vector<std::string> ReadLines(const std::string& path) {
  std::vector<std::string> lines;
  std::istringstream in(ReadFile(path));
  std::string line;
  while (std::getline(in, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    lines.push_back(line);
  }
  return lines;
}

bool Exists(const std::string& path) {
  return fs::exists(path);
}

bool WaitFor(const std::function<bool()>& condition, std::chrono::milliseconds deadline) {
  const auto until = std::chrono::steady_clock::now() + deadline;
  while (std::chrono::steady_clock::now() < until) {
    if (condition()) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return condition();
}

std::string BinaryPath(std::string_view name) {
  std::string path = std::string(CORVANET_BIN_DIR) + "/" + std::string(name);
  // "corvanet-cli" is "corvanet-cli.exe" on Windows; "Complete.exe" keeps its name everywhere.
  if (!path.ends_with(".exe")) path += CORVANET_EXECUTABLE_SUFFIX;
  return path;
}

}  // namespace corvanet::test

namespace corvanet::test {

std::vector<std::string> FileNames(const std::string& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

ProgramRun RunProgram(const std::string& path, const std::vector<std::string>& args,
                      const std::vector<std::string>& environment, const std::string& folder,
                      const std::string& scratch, int time_limit) {
  // Set here for the child to inherit, and put back as they were after it started.
  std::vector<std::pair<std::string, std::optional<std::string>>> kept;
  for (const std::string& entry : environment) {
    const std::string name = entry.substr(0, entry.find('='));
    const std::string value = entry.substr(name.size() + 1);
    const char* old = std::getenv(name.c_str());
    kept.emplace_back(name, old != nullptr ? std::optional<std::string>(old) : std::nullopt);
    if (value.empty()) {
      ::unsetenv(name.c_str());
    } else {
      ::setenv(name.c_str(), value.c_str(), 1);
    }
  }
  const std::string out_file = scratch + "/program-out.txt";
  const std::string err_file = scratch + "/program-err.txt";
  std::remove(out_file.c_str());
  std::remove(err_file.c_str());
  ProgramRun run;
  const ChildId child = SpawnChild(path, args, out_file, err_file, folder);
  for (const auto& [name, value] : kept) {
    if (value) {
      ::setenv(name.c_str(), value->c_str(), 1);
    } else {
      ::unsetenv(name.c_str());
    }
  }
  const auto limit = std::chrono::seconds(time_limit > 0 ? time_limit : 3600);
  run.code = WaitForChild(child, limit);
  if (run.code == -1 && time_limit > 0) run.code = 124;
  run.out = ReadFile(out_file);
  run.err = ReadFile(err_file);
  return run;
}

std::vector<std::string> ShellWords(const std::string& text) {
  std::vector<std::string> words;
  std::string word;
  bool in_word = false;
  bool quoted = false;
  for (const char c : text) {
    if (c == '\'') {
      quoted = !quoted;
      in_word = true;
    } else if (c == ' ' && !quoted) {
      if (in_word) words.push_back(std::exchange(word, {}));
      in_word = false;
    } else {
      word += c;
      in_word = true;
    }
  }
  if (in_word) words.push_back(word);
  return words;
}

}  // namespace corvanet::test
