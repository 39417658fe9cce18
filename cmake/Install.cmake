# What `cmake --install` lays out, and a release archive of it (cpack): the filter with its symbols and what a driver
# needs of it, the host with the simulated provider and the device models, the pipeline's interfaces with a CMake package
# for filters of others, documents, and the licences of what is linked into the programs.
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME devkit)
set(package PageValidateDevKit)
set(package_folder lib/cmake/${package})

install(FILES $<TARGET_FILE:pagevalidatefilter> DESTINATION driver)
if(MINGW)
  install(FILES $<TARGET_FILE:pagevalidatefilter>.debug DESTINATION driver)
endif()
install(DIRECTORY packaging/ DESTINATION driver)

# The host looks for everything else beside itself.
install(TARGETS filterhost RUNTIME DESTINATION bin)
install(FILES $<TARGET_FILE:pagevalidatefilter> DESTINATION bin)
install(TARGETS simulated_prntvpt LIBRARY DESTINATION bin/simulated)
install(DIRECTORY devkit/devices DESTINATION bin)

install(FILES src/platform/filterpipeline.h src/platform/guid.h src/platform/windows.h DESTINATION include/platform)
install(FILES cmake/package/${package}Config.cmake DESTINATION ${package_folder})
install(FILES cmake/toolchains/mingw.cmake cmake/toolchains/mingw-x64.cmake DESTINATION ${package_folder}/toolchains)
include(CMakePackageConfigHelpers)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/${package}ConfigVersion.cmake COMPATIBILITY SameMajorVersion
  ARCH_INDEPENDENT)
install(FILES ${CMAKE_BINARY_DIR}/${package}ConfigVersion.cmake DESTINATION ${package_folder})

install(DIRECTORY examples DESTINATION .)
install(DIRECTORY docs DESTINATION .)
install(FILES README.md CHANGELOG.md THIRD-PARTY.md DESTINATION .)

# The texts come with the packages that the libraries are built from; THIRD-PARTY.md says which library is which.
if(MINGW)
  set(sources ${CMAKE_SOURCE_DIR}/build/dependencies/sources)
  foreach(licence
      libxml2=${sources}/libxml2/Copyright
      libzip=${sources}/libzip/LICENSE
      zlib=/usr/share/doc/libz-mingw-w64-dev/copyright
      nlohmann-json=/usr/share/doc/nlohmann-json3-dev/copyright
      cli11=/usr/share/doc/libcli11-dev/copyright
      gcc=/usr/share/doc/gcc-mingw-w64-base/copyright
      mingw-w64=/usr/share/doc/mingw-w64-common/copyright)
    string(REGEX MATCH "^([^=]*)=(.*)$" found ${licence})
    install(FILES ${CMAKE_MATCH_2} DESTINATION licences RENAME ${CMAKE_MATCH_1}.txt)
  endforeach()
endif()

set(CPACK_PACKAGE_NAME pagevalidatefilter)
set(CPACK_PACKAGE_VENDOR "The filter's developers")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_GENERATOR ZIP)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_FILE_NAME ${CPACK_PACKAGE_NAME}-${PROJECT_VERSION}-x64)
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_SOURCE_DIR}/build/release)
set(CPACK_PACKAGE_CHECKSUM SHA256)
include(CPack)
