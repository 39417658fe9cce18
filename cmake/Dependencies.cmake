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
