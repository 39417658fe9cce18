# One target a folder. A folder's headers are reached through forwarding headers in an include folder of the target's
# own, so a source can include only what its target links: an include against the direction of the layers fails.

# folder_headers(TARGET SCOPE ROOT FOLDER): gives TARGET the forwarding headers of ROOT/FOLDER (not of its sub-folders).
function(folder_headers target scope root folder)
  file(GLOB headers CONFIGURE_DEPENDS ${root}/${folder}/*.h)
  set(include ${CMAKE_BINARY_DIR}/include/${target})
  foreach(header IN LISTS headers)
    get_filename_component(name ${header} NAME)
    file(CONFIGURE OUTPUT ${include}/${folder}/${name} CONTENT "#include \"${header}\"\n")
  endforeach()
  file(MAKE_DIRECTORY ${include})
  target_include_directories(${target} ${scope} ${include})
endfunction()

# precompile_headers(TARGET): the folder libraries of this directory that follow share one precompiled header.
macro(precompile_headers target)
  if(PAGEVALIDATE_PRECOMPILE)
    file(CONFIGURE OUTPUT ${target}.cpp CONTENT "")
    add_library(${target} STATIC ${CMAKE_CURRENT_BINARY_DIR}/${target}.cpp)
    target_include_directories(${target} PRIVATE ${CMAKE_SOURCE_DIR}/src)
    target_link_libraries(${target} PRIVATE compiler_flags)
    target_precompile_headers(${target} PRIVATE ${CMAKE_SOURCE_DIR}/cmake/precompiled.h)
    set(precompiled ${target})
  endif()
endmacro()

# reuse_precompiled(TARGET): what such a library does, for another target.
function(reuse_precompiled target)
  if(precompiled)
    target_precompile_headers(${target} REUSE_FROM ${precompiled})
  endif()
endfunction()

# folder_library(TARGET ROOT FOLDER [LINKS TARGET...] [FIRST SOURCE...]): a static library of all sources of ROOT/FOLDER,
# an interface library when there are none. Of a unity build the sources named FIRST come into the same unit.
function(folder_library target root folder)
  cmake_parse_arguments(PARSE_ARGV 3 arg "" "" "LINKS;FIRST")
  file(GLOB sources CONFIGURE_DEPENDS ${root}/${folder}/*.cpp)
  list(TRANSFORM arg_FIRST PREPEND ${root}/${folder}/)
  list(PREPEND sources ${arg_FIRST})
  list(REMOVE_DUPLICATES sources)
  list(FILTER sources EXCLUDE REGEX "/(main|dllmain)\\.cpp$")
  if(sources)
    add_library(${target} STATIC ${sources})
    set(scope PUBLIC)
  else()
    add_library(${target} INTERFACE)
    set(scope INTERFACE)
  endif()
  folder_headers(${target} ${scope} ${root} ${folder})
  target_link_libraries(${target} ${scope} compiler_flags ${arg_LINKS})
  if(sources)
    reuse_precompiled(${target})
  endif()
endfunction()

# folder_tests(TARGET FOLDER [LINKS TARGET...] [TIMEOUT SECONDS]): one test program of all sources of tests/FOLDER, none
# without sources. Few large programs, because each start under Wine has its price.
function(folder_tests target folder)
  cmake_parse_arguments(PARSE_ARGV 2 arg "" "TIMEOUT" "LINKS")
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/tests/${folder}/*.cpp)
  if(NOT sources)
    return()
  endif()
  add_executable(${target} ${sources})
  folder_headers(${target} PRIVATE ${CMAKE_SOURCE_DIR}/tests ${folder})
  target_link_libraries(${target} PRIVATE compiler_flags test_support ${arg_LINKS})
  target_precompile_headers(${target} REUSE_FROM test_support)
  target_compile_options(${target} PRIVATE ${test_options})
  add_dependencies(${target} samples)
  target_compile_definitions(${target} PRIVATE
    SAMPLES_FOLDER="${CMAKE_BINARY_DIR}/samples" SOURCE_FOLDER="${CMAKE_SOURCE_DIR}")
  judged_test(${target} PROGRAM ${target} TIMEOUT ${arg_TIMEOUT})
endfunction()
