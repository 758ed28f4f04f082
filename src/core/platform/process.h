#pragma once
#include <string>

namespace corvanet {

// Starts a batch file with no window and without waiting for it. On POSIX it runs under `sh` in
// `working_folder` (its CR LF line ends accepted), with a `Call` function defined (so
// "Call Complete.exe" works) and `program_folder` first on PATH, where the converter helpers are
// found. `batch_file` is relative to `working_folder` or absolute.
bool StartHiddenBatch(const std::string& batch_file, const std::string& working_folder,
                      const std::string& program_folder);

// The folder of the running executable, with a trailing separator; empty when unknown.
std::string ExecutableFolder();

}  // namespace corvanet
