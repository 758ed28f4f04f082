# Cross-compiles the Windows programs on Debian with mingw-w64 (the -posix compilers, whose
# std::thread the fetch pool and the writers need). `make windows` uses it.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CORVANET_MINGW_PREFIX x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${CORVANET_MINGW_PREFIX}-gcc-posix)
set(CMAKE_CXX_COMPILER ${CORVANET_MINGW_PREFIX}-g++-posix)
set(CMAKE_RC_COMPILER ${CORVANET_MINGW_PREFIX}-windres)
# Libraries and headers come from the Windows tree only; programs (makensis, python3) from the
# build machine.
set(CMAKE_FIND_ROOT_PATH /usr/${CORVANET_MINGW_PREFIX})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# Tests run the programs they build through Wine.
set(CMAKE_CROSSCOMPILING_EMULATOR wine)
