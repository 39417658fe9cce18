# The libraries of the dev kit and the tests: on Debian built for the target by cmake/dependencies.sh, elsewhere from
# vcpkg.json. The product DLL links none of them.
if(PAGEVALIDATE_TESTS)
  find_package(GTest CONFIG REQUIRED)
  find_package(benchmark CONFIG REQUIRED)
endif()
find_package(LibXml2 CONFIG QUIET)
if(NOT LibXml2_FOUND)
  find_package(LibXml2 REQUIRED)
endif()
set(ZLIB_USE_STATIC_LIBS ON)
find_package(ZLIB REQUIRED)
find_package(libzip CONFIG REQUIRED)

find_path(NLOHMANN_JSON_INCLUDE_DIR nlohmann/json.hpp REQUIRED)
find_path(CLI11_INCLUDE_DIR CLI/CLI.hpp REQUIRED)
add_library(header_libraries INTERFACE)
target_include_directories(header_libraries SYSTEM INTERFACE ${NLOHMANN_JSON_INCLUDE_DIR} ${CLI11_INCLUDE_DIR})

# The scripts need Pillow and fontTools. Debian's Python has them as packages; another one in PATH need not.
if(NOT Python3_EXECUTABLE AND EXISTS /usr/bin/python3)
  set(Python3_EXECUTABLE /usr/bin/python3)
endif()
find_package(Python3 REQUIRED COMPONENTS Interpreter)
