#pragma once
// Shared by every test: a temporary folder per test, small file helpers, and a wait on a
// condition with a deadline instead of sleeps.
#include <chrono>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace corvanet::test {

// A fresh folder removed with everything in it at the end of the test. path() ends with the native
// separator, and a name joined to it by / has its '/' turned into that separator, so that paths
// the tests build read as the program's own ("Lists\Copies\" on Windows).
class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  const std::string& path() const { return path_; }
  std::string operator/(std::string_view name) const;

 private:
  std::string path_;
};

std::string ReadFile(const std::string& path);
// Writes the text as it stands (no line-end conversion), creating parent folders.
void WriteFile(const std::string& path, std::string_view content);
// Writes lines each ended by CR LF.
void WriteLines(const std::string& path, const std::vector<std::string>& lines);
// The file's lines without their endings (CR LF or LF).
std::vector<std::string> ReadLines(const std::string& path);
bool Exists(const std::string& path);
// The names of what a folder holds, sorted: to prove no temporary file stayed behind.
std::vector<std::string> FileNames(const std::string& folder);
inline bool Contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

bool WaitFor(const std::function<bool()>& condition,
             std::chrono::milliseconds deadline = std::chrono::seconds(10));

// Absolute path of a built program.
std::string BinaryPath(std::string_view name);

}  // namespace corvanet::test
