# Every test is run by cmake/run_test.py, which takes it for passed only when it came to its own end.
find_package(Python3 REQUIRED COMPONENTS Interpreter)

# judged_test(NAME PROGRAM TARGET|SCRIPT FILE [ARGUMENTS ARGUMENT...] [TIMEOUT SECONDS]): adds a test that runs a program
# of the build or a Python script. It is skipped when it ends with 77.
function(judged_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "PROGRAM;SCRIPT;TIMEOUT" "ARGUMENTS")
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT 300)
  endif()
  if(arg_PROGRAM)
    set(command ${CMAKE_CROSSCOMPILING_EMULATOR} $<TARGET_FILE:${arg_PROGRAM}>)
  else()
    cmake_path(ABSOLUTE_PATH arg_SCRIPT BASE_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR} OUTPUT_VARIABLE command)
  endif()
  # The long form takes longer by far.
  math(EXPR long "${arg_TIMEOUT} * 6")
  add_test(NAME ${name} COMMAND ${Python3_EXECUTABLE} ${CMAKE_SOURCE_DIR}/cmake/run_test.py --timeout ${arg_TIMEOUT}
    --long-timeout ${long} ${command} ${arg_ARGUMENTS})
  # The time-out of ctest is for the case that the runner itself hangs.
  math(EXPR timeout "${long} + 60")
  # What may take longest begins first.
  set_tests_properties(${name} PROPERTIES TIMEOUT ${timeout} COST ${arg_TIMEOUT} SKIP_RETURN_CODE 77)
endfunction()

# misbehaves_on_purpose(TARGET): one that crashes does so as it means to, also where undefined behaviour is trapped.
function(misbehaves_on_purpose target)
  if(PAGEVALIDATE_TRAPS)
    target_compile_options(${target} PRIVATE -fno-sanitize=undefined)
  endif()
endfunction()
