# Installs the build into a scratch prefix, then configures, builds and runs the sample
# hosts against it, once through find_package and once through pkg-config.
file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)

include(${CMAKE_CURRENT_LIST_DIR}/../support/run_step.cmake)

install_components(${BUILD_DIR} ${prefix} runtime development tools REQUIRED
  include/tsruntime/clsZKRunTimeLib.h include/tsruntime/tsruntime_c.h
  lib/cmake/tsruntime/tsruntimeConfig.cmake
  lib/pkgconfig/tsruntime.pc lib/pkgconfig/tsruntime-c.pc lib/libtszlib.so)

# The installed tsrt finds the installed library relative to itself: no ldconfig, no
# LD_LIBRARY_PATH.
set(ENV{LD_LIBRARY_PATH} "")
expect("^True\n$" ${prefix}/bin/tsrt call clsZKRunTimeLib Init)
expect("^tsrt \\(TSRuntimeLib\\) [0-9]+\\.[0-9]+\\.[0-9]+\n$" ${prefix}/bin/tsrt --version)

run(${CMAKE_COMMAND} -S ${SOURCE_DIR}/examples -B ${WORK_DIR}/examples -G Ninja
    -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_BUILD_TYPE=Release)
run(${CMAKE_COMMAND} --build ${WORK_DIR}/examples)
expect("Init: True\nCompressData: True" ${WORK_DIR}/examples/hello_tsruntime)
expect("Filter: abc\nSelStart = 2" ${WORK_DIR}/examples/hello_c)

# The same sample built by hand with pkg-config, as a Makefile user would.
set(ENV{PKG_CONFIG_PATH} ${prefix}/lib/pkgconfig)
string(REPLACE "." "\\." version_pattern "^${VERSION}\n$")
expect("${version_pattern}" pkg-config --modversion tsruntime)
function(pkg_config_flags module expected var)  # the flags, which hold plain paths
  run(pkg-config --cflags --libs ${module})
  string(STRIP "${last_output}" flags)
  if(NOT flags STREQUAL expected)
    message(FATAL_ERROR "pkg-config --cflags --libs ${module} printed ${flags}, not ${expected}")
  endif()
  separate_arguments(flags UNIX_COMMAND "${flags}")
  set(${var} ${flags} PARENT_SCOPE)
endfunction()
pkg_config_flags(tsruntime "-I${prefix}/include -std=c++20 -L${prefix}/lib -ltsruntime" flags)
run(c++ ${SOURCE_DIR}/examples/hello_tsruntime.cpp ${flags} -Wl,-rpath,${prefix}/lib
    -o ${WORK_DIR}/hello_pkgconfig)
expect("Init: True\nCompressData: True" ${WORK_DIR}/hello_pkgconfig)
# C compilers get no C++ flag, which would warn: any warning fails.
pkg_config_flags(tsruntime-c "-I${prefix}/include -L${prefix}/lib -ltsruntime" c_flags)
run(cc -std=c11 -Werror ${SOURCE_DIR}/examples/hello_c.c ${c_flags} -Wl,-rpath,${prefix}/lib
    -o ${WORK_DIR}/hello_c_pkgconfig)
expect("Filter: abc" ${WORK_DIR}/hello_c_pkgconfig)
