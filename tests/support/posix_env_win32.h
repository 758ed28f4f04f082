#pragma once
// setenv and unsetenv for the test suites built for Windows, whose C runtime has only _putenv_s:
// the tests set the program's environment variables the POSIX way on every system. Included
// before every test source of the Windows build (tests/CMakeLists.txt).
#include <stdlib.h>

inline int setenv(const char* name, const char* value, int overwrite) {
  if (overwrite == 0 && getenv(name) != nullptr) return 0;
  return _putenv_s(name, value);
}

inline int unsetenv(const char* name) {
  return _putenv_s(name, "");
}
