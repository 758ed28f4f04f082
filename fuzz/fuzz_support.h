#pragma once
// What the fuzz targets share: a scratch folder of this process, the fuzz input as a file there
// (the readers under test read files), and a session in a scratch installation.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>

#include "core/platform/clock.h"
#include "core/platform/headless_shell.h"
#include "core/platform/http.h"
#include "core/state/session.h"

namespace corvanet::fuzz {

// A folder of this process, made on first use, ending with '/'.
const std::string& ScratchFolder();
// Writes the input to `name` in the scratch folder (or below it) and returns the path.
std::string WriteInput(const std::string& name, const std::uint8_t* data, std::size_t size);
std::string_view AsText(const std::uint8_t* data, std::size_t size);

// A session in a scratch installation made once per process: settings, lists and master file are
// read from there. Message boxes go nowhere; nothing is fetched.
struct ScratchSession {
  ScratchSession();
  std::ostringstream out;
  HeadlessShell shell{out, false};
  SystemHttpClient http;
  SystemClock clock;
  Session session{shell, http, clock};
};

}  // namespace corvanet::fuzz
