# One interface target that every target of the tree is compiled with.
add_library(compiler_flags INTERFACE)
target_compile_features(compiler_flags INTERFACE cxx_std_20)
set(CMAKE_CXX_EXTENSIONS OFF)
target_compile_definitions(compiler_flags INTERFACE UNICODE _UNICODE _WIN32_WINNT=0x0601)

if(MSVC)
  # Its C library calls std::getenv deprecated.
  target_compile_definitions(compiler_flags INTERFACE _CRT_SECURE_NO_WARNINGS)
  target_compile_options(compiler_flags INTERFACE /W4 /WX /permissive- /utf-8 /EHsc /Zc:__cplusplus)
else()
  target_compile_options(compiler_flags INTERFACE -Wall -Wextra -Wpedantic -Wshadow
    -Woverloaded-virtual -Wold-style-cast -Wimplicit-fallthrough -Werror
    # g++ 12 sees overlaps and overflows in inlined string concatenation that cannot be (GCC bugs 105329, 105651), the
    # latter only when the library's headers are precompiled, which it then does not take for the system's.
    $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
    $<$<CXX_COMPILER_ID:GNU>:-Wno-stringop-overflow>
    $<$<CXX_COMPILER_ID:GNU>:-Wno-stringop-overread>
    $<$<CXX_COMPILER_ID:GNU>:-Wno-array-bounds>
    # So that a compiler cache can see through precompiled headers.
    $<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess>
    # Where nothing is inlined, sources that are compiled together have more sections than a plain object file holds.
    $<$<AND:$<CXX_COMPILER_ID:GNU>,$<NOT:$<CONFIG:Release>>>:-Wa,-mbig-obj>
    # Debug information and messages name files from the source root, so a build does not carry its folder.
    -ffile-prefix-map=${CMAKE_SOURCE_DIR}/=)
endif()
