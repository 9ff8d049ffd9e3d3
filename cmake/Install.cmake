# Installs the library, its public headers, a CMake package
# (find_package(tsruntime) -> tsruntime::tsruntime) and a pkg-config file.
#
# Components, one Debian package each (cmake/Packaging.cmake):
#   runtime      the shared library and the modules it loads
#   development  headers, CMake package, pkg-config file, the link-time name
#   tools        tsrt
#   python       the Python package
#   gambas       the Gambas component (gambas/CMakeLists.txt)
include(CMakePackageConfigHelpers)

install(TARGETS tsruntime EXPORT tsruntimeTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime
          NAMELINK_COMPONENT development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
# Modules the library loads beside itself find it, and each other, in the same folder.
tsruntime_runpath(tsruntime ${CMAKE_INSTALL_LIBDIR} runtime)
install(DIRECTORY include/tsruntime DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  COMPONENT development)
# The compression module goes beside the library, where the runtime looks for it first.
install(TARGETS tszlib LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime)

set(TSRUNTIME_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/tsruntime)
install(EXPORT tsruntimeTargets NAMESPACE tsruntime:: DESTINATION ${TSRUNTIME_CMAKE_DIR}
  COMPONENT development)
configure_package_config_file(cmake/tsruntimeConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/tsruntimeConfig.cmake INSTALL_DESTINATION ${TSRUNTIME_CMAKE_DIR})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/tsruntimeConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/tsruntimeConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/tsruntimeConfigVersion.cmake
        DESTINATION ${TSRUNTIME_CMAKE_DIR} COMPONENT development)

# pkg-config files: tsruntime for C++ (it adds -std=c++20), tsruntime-c for C. Their
# prefix is the one installed to, written when installing, so that the flags hold plain
# absolute paths (none at all for /usr) wherever the tree goes.
set(prefix @prefix@)
foreach(pc tsruntime tsruntime-c)
  configure_file(cmake/${pc}.pc.in ${pc}.pc.in @ONLY)
  install(CODE "set(pc_file ${CMAKE_CURRENT_BINARY_DIR}/${pc}.pc)" COMPONENT development)
  install(CODE [[
    cmake_path(ABSOLUTE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY "$ENV{PWD}" NORMALIZE
               OUTPUT_VARIABLE prefix)
    string(REGEX REPLACE "(.)/$" "\\1" prefix "${prefix}")
    configure_file(${pc_file}.in ${pc_file} @ONLY)
  ]] COMPONENT development)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${pc}.pc
          DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
endforeach()
unset(prefix)

include(cmake/Packaging.cmake)
