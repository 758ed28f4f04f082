#include "fuzz_support.h"

#include <unistd.h>

#include <cstdlib>

#include "core/app/startup.h"
#include "core/platform/files.h"

namespace corvanet::fuzz {

const std::string& ScratchFolder() {
  static const std::string folder = [] {
    char pattern[] = "/tmp/corvanet-fuzz-XXXXXX";
    const char* made = ::mkdtemp(pattern);
    return std::string(made != nullptr ? made : "/tmp") + "/";
  }();
  return folder;
}

std::string WriteInput(const std::string& name, const std::uint8_t* data, std::size_t size) {
  const std::string path = ScratchFolder() + name;
  WriteWholeFile(path, AsText(data, size));
  return path;
}

std::string_view AsText(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

ScratchSession::ScratchSession() {
  StartupOptions options;
  options.base_directory = ScratchFolder() + "installation/";
  options.start_directory = ScratchFolder();
  options.change_directory = false;
  options.may_run_unattended = false;
  Form_Load(session, options);
}

}  // namespace corvanet::fuzz
