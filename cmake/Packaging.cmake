# Debian packages, one per install component (scripts/package.sh builds them):
#   libtsruntime1      the library and the modules it loads (compression, user interface)
#   libtsruntime-dev   headers, CMake package, pkg-config file
#   python3-tsruntime  the Python package, in the system Python's dist-packages
#   tsruntime-tools    tsrt
#   gambas3-tsruntime  the Gambas component gb.tsruntime (cmake/PackagingGambas.cmake)
# Dependencies on Debian's libraries come from dpkg-shlibdeps; the packages depend on
# each other at exactly this version.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tsruntime)
set(CPACK_PACKAGE_VENDOR "Tessaly")
set(CPACK_PACKAGE_CONTACT "TSRuntimeLib developers <tsruntime@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Tessaly Runtime Library")
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime development python tools)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The library is ours, not a Debian package's: dpkg-shlibdeps finds it here and leaves
# the dependency on it to the explicit ones below.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libtsruntime1)
# A shlibs file for packages built against the library, and the ldconfig trigger.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_LIST_DIR}/deb/triggers)
# Qt's own translations put the standard dialogs in the user's language.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_RECOMMENDS "qt6-translations-l10n")
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION
  "Tessaly Runtime Library: strings, amounts in words, sorting, MD5, dictionary, storage,\n INI data, files, registry, compression, timers, window subclassing and dialogs.")

set(exact "libtsruntime1 (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libtsruntime-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${exact}, libicu-dev")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION
  "Tessaly Runtime Library: headers, CMake package and pkg-config file")

set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-tsruntime)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "${exact}, python3 (>= 3.11), python3 (<< 3.12)")
set(CPACK_DEBIAN_PYTHON_DESCRIPTION "Tessaly Runtime Library: the Python package tsruntime")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME tsruntime-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${exact}")
set(CPACK_DEBIAN_TOOLS_DESCRIPTION "Tessaly Runtime Library: tsrt, the command-line host")

include(${CMAKE_CURRENT_LIST_DIR}/PackagingGambas.cmake)

include(CPack)
