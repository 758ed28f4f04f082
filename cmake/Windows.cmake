# What the Windows build uses in place of the Linux libraries: WinHTTP for the client (the system's
# own; Debian carries no libcurl for Windows), CLI11 and cpp-httplib compiled from its whole header for the
# demo service and the tests' servers, GoogleTest from its sources. Every program is linked
# statically, so an .exe needs nothing beside it but Windows itself.
set(CORVANET_HTTPLIB_DIR "${CMAKE_BINARY_DIR}/deps/cpp-httplib" CACHE PATH
    "Folder holding cpp-httplib's whole httplib.h (scripts/httplib-source.sh puts it there)")
if(NOT EXISTS "${CORVANET_HTTPLIB_DIR}/httplib.h")
  execute_process(COMMAND bash "${PROJECT_SOURCE_DIR}/scripts/httplib-source.sh"
                          "${CORVANET_HTTPLIB_DIR}" COMMAND_ERROR_IS_FATAL ANY)
endif()
add_library(corvanet_httplib INTERFACE)
target_include_directories(corvanet_httplib SYSTEM INTERFACE "${CORVANET_HTTPLIB_DIR}")
target_link_libraries(corvanet_httplib INTERFACE ws2_32)
add_library(httplib::httplib ALIAS corvanet_httplib)

# CLI11 is headers only: Debian's copy serves, seen through a folder of its own so that no other
# Linux header is on the Windows include path.
file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/deps/cli11)
file(CREATE_LINK /usr/include/CLI ${CMAKE_BINARY_DIR}/deps/cli11/CLI SYMBOLIC)
add_library(CLI11::CLI11 INTERFACE IMPORTED)
target_include_directories(CLI11::CLI11 SYSTEM INTERFACE ${CMAKE_BINARY_DIR}/deps/cli11)

add_link_options(-static)
# mingw-w64's GCC 12 warns of overlapping copies inside std::string's own replace when it inlines
# it (a false positive of that compiler, fixed in later ones); it must not stop a -Werror build.
add_compile_options(-Wno-restrict)
# Windows 10's interfaces (the library wants them), Unicode (W) system calls by default, and none
# of <windows.h>'s min/max macros.
add_compile_definitions(_WIN32_WINNT=0x0A00 UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN)

if(CORVANET_BUILD_TESTS)
  set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
  set(gtest_disable_pthreads OFF CACHE BOOL "" FORCE)
  # Its build names the GTest:: targets the suites link.
  add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
endif()
