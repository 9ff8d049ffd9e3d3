# Debian packages, one per install component (scripts/package.sh builds them). Each is
# declared once below with tsruntime_deb_package(); a package gains maintainer scripts or
# triggers by a file of that name in cmake/deb/<package>/, and every package carries
# cmake/deb/copyright as /usr/share/doc/<package>/copyright.
#
# Binaries ship stripped; their debug information goes to <package>-dbgsym. Dependencies
# on Debian's libraries come from dpkg-shlibdeps; the packages depend on each other at
# exactly this version.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tsruntime)
set(CPACK_PACKAGE_VENDOR "Tessaly")
set(CPACK_PACKAGE_CONTACT "TSRuntimeLib developers <tsruntime@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Tessaly Runtime Library")
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_DEBUGINFO_PACKAGE ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# A shlibs file for packages built against the library (its ldconfig trigger is in
# cmake/deb/libtsruntime1/).
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
# The library is ours, not a Debian package's: dpkg-shlibdeps finds it here and leaves
# the dependency on it to the explicit ones below.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
set(CPACK_COMPONENTS_ALL)

# tsruntime_deb_package(COMPONENT PACKAGE SECTION DESCRIPTION [DEPENDENCY...])
macro(tsruntime_deb_package component package section description)
  string(TOUPPER ${component} _c)
  list(APPEND CPACK_COMPONENTS_ALL ${component})
  set(CPACK_DEBIAN_${_c}_PACKAGE_NAME ${package})
  set(CPACK_DEBIAN_${_c}_PACKAGE_SECTION ${section})
  set(CPACK_DEBIAN_${_c}_DESCRIPTION "${description}")
  string(REPLACE ";" ", " CPACK_DEBIAN_${_c}_PACKAGE_DEPENDS "${ARGN}")
  file(GLOB CPACK_DEBIAN_${_c}_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_LIST_DIR}/deb/${package}/*)
  install(FILES ${CMAKE_CURRENT_LIST_DIR}/deb/copyright
          DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${component})
endmacro()

set(exact "libtsruntime1 (= ${PROJECT_VERSION})")
tsruntime_deb_package(runtime libtsruntime1 libs
  "Tessaly Runtime Library: strings, amounts in words, sorting, MD5, dictionary, storage,\n INI data, files, registry, compression, timers, window subclassing and dialogs.")
tsruntime_deb_package(development libtsruntime-dev libdevel
  "Tessaly Runtime Library: headers, CMake package and pkg-config files"
  "${exact}" libicu-dev)
tsruntime_deb_package(python python3-tsruntime python
  "Tessaly Runtime Library: the Python package tsruntime"
  "${exact}" "python3 (>= 3.11)" "python3 (<< 3.12)")
tsruntime_deb_package(tools tsruntime-tools utils
  "Tessaly Runtime Library: tsrt, the command-line host"
  "${exact}")
# Qt's own translations put the standard dialogs in the user's language.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_RECOMMENDS "qt6-translations-l10n")
# gambas3-tsruntime, where the component is built.
if(TARGET gambas_component)
  tsruntime_deb_package(gambas gambas3-tsruntime devel
    "Tessaly Runtime Library: the Gambas component gb.tsruntime\n Every class of the library as a Gambas class, with its members declared."
    "${exact}" "gambas3-runtime (>= 3.18)")
endif()

include(CPack)
