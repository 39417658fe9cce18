# A second compiler for the MinGW target, with the headers and libraries of MinGW's own g++: what ./test.sh --clang and
# --tidy look at the sources with. What ships is built by g++.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(triplet x86_64-w64-mingw32)
set(CMAKE_C_COMPILER clang-16)
set(CMAKE_CXX_COMPILER clang++-16)
set(CMAKE_C_COMPILER_TARGET ${triplet})
set(CMAKE_CXX_COMPILER_TARGET ${triplet})
set(CMAKE_RC_COMPILER ${triplet}-windres)
set(CMAKE_AR ${triplet}-ar)
set(CMAKE_RANLIB ${triplet}-ranlib)
set(CMAKE_OBJCOPY ${triplet}-objcopy)
execute_process(COMMAND ${triplet}-g++-posix -print-libgcc-file-name
  OUTPUT_VARIABLE libgcc OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
get_filename_component(gcc ${libgcc} DIRECTORY)

# Every warning, but for those that
set(off
  c++98-compat c++98-compat-pedantic      # want an older language,
  non-virtual-dtor weak-vtables           # do not know COM, whose interfaces have no virtual destructor and no source,
  padded                                  # tell of padding, which no structure here is written to a file with,
  exit-time-destructors global-constructors # forbid tables that are built when the DLL is loaded and go with it,
  unsafe-buffer-usage                     # forbid all arithmetic on pointers, which a stream buffer is made of,
  ctad-maybe-unsupported                  # forbid std::scoped_lock lock(mutex),
  switch-enum                             # want the library's own end marks as cases beside a default,
  missing-prototypes                      # want a declaration of DllMain, which only the system calls,
  duplicate-enum                          # want no interface's slots to begin where those of its base do,
  float-equal                             # forbid to ask for the very number that was read,
  reserved-identifier                     # forbid the names of libraries where they are declared or overridden,
  used-but-marked-unused)                 # tell of snprintf, which the MinGW headers mark so.
list(TRANSFORM off PREPEND -Wno-)
list(JOIN off " " off)
# Variables of a thread are emulated, as in g++'s library.
set(CMAKE_CXX_FLAGS_INIT "-stdlib++-isystem ${gcc}/include/c++ -stdlib++-isystem ${gcc}/include/c++/${triplet} \
-Weverything ${off} -femulated-tls")

# std::type_info::operator== is inline for clang and in g++'s library besides.
set(linking "-static -L${gcc} -B${gcc} -Wl,--allow-multiple-definition")
set(CMAKE_EXE_LINKER_FLAGS_INIT ${linking})
set(CMAKE_SHARED_LINKER_FLAGS_INIT ${linking})
set(CMAKE_MODULE_LINKER_FLAGS_INIT ${linking})
set(CMAKE_CXX_STANDARD_LIBRARIES "-Wl,--start-group -lstdc++ -lgcc_eh -lpthread -Wl,--end-group")
set(CMAKE_FIND_ROOT_PATH /usr/${triplet} ${CMAKE_PREFIX_PATH})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
