# For filters of others:
#
#   find_package(PageValidateDevKit REQUIRED)
#   target_link_libraries(myfilter PRIVATE PageValidateDevKit::filterpipeline)
#
# PageValidateDevKit::filterpipeline  the pipeline's interfaces (platform/filterpipeline.h) and the system's libraries
# PageValidateDevKit::filterhost      the host, a program for Windows
cmake_path(SET _root NORMALIZE ${CMAKE_CURRENT_LIST_DIR}/../../..)
if(NOT TARGET PageValidateDevKit::filterpipeline)
  add_library(PageValidateDevKit::filterpipeline INTERFACE IMPORTED)
  set_target_properties(PageValidateDevKit::filterpipeline PROPERTIES
    INTERFACE_INCLUDE_DIRECTORIES ${_root}/include
    INTERFACE_COMPILE_FEATURES cxx_std_17
    INTERFACE_COMPILE_DEFINITIONS "UNICODE;_UNICODE;_WIN32_WINNT=0x0601"
    INTERFACE_LINK_LIBRARIES "ole32;oleaut32;uuid")
  add_executable(PageValidateDevKit::filterhost IMPORTED)
  set_target_properties(PageValidateDevKit::filterhost PROPERTIES IMPORTED_LOCATION ${_root}/bin/filterhost.exe)
endif()
unset(_root)
