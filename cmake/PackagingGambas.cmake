# gambas3-tsruntime: the Gambas component gb.tsruntime (gambas/), packaged where it is
# built. Included by Packaging.cmake before CPack.
if(NOT TARGET gambas_component)
  return()
endif()
list(APPEND CPACK_COMPONENTS_ALL gambas)
set(CPACK_DEBIAN_GAMBAS_PACKAGE_NAME gambas3-tsruntime)
set(CPACK_DEBIAN_GAMBAS_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_GAMBAS_PACKAGE_DEPENDS
  "libtsruntime1 (= ${PROJECT_VERSION}), gambas3-runtime (>= 3.18)")
set(CPACK_DEBIAN_GAMBAS_DESCRIPTION
  "Tessaly Runtime Library: the Gambas component gb.tsruntime\n Every class of the library as a Gambas class, with its members declared.")
