# Installs the library, its public headers, a CMake package
# (find_package(tsruntime) -> tsruntime::tsruntime) and a pkg-config file.
include(CMakePackageConfigHelpers)

install(TARGETS tsruntime EXPORT tsruntimeTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(DIRECTORY include/tsruntime DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
# The compression module goes beside the library, where the runtime looks for it first.
install(TARGETS tszlib LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})

set(TSRUNTIME_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/tsruntime)
install(EXPORT tsruntimeTargets NAMESPACE tsruntime:: DESTINATION ${TSRUNTIME_CMAKE_DIR})
configure_package_config_file(cmake/tsruntimeConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/tsruntimeConfig.cmake INSTALL_DESTINATION ${TSRUNTIME_CMAKE_DIR})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/tsruntimeConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/tsruntimeConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/tsruntimeConfigVersion.cmake
        DESTINATION ${TSRUNTIME_CMAKE_DIR})

file(RELATIVE_PATH TSRUNTIME_PC_TO_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(cmake/tsruntime.pc.in ${CMAKE_CURRENT_BINARY_DIR}/tsruntime.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/tsruntime.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
