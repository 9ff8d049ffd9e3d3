# Sourced by the build scripts: compile through ccache when it is there, so that builds of
# the same sources with the same flags (the optimised build and the packaging build) compile
# each file once. Paths are taken relative to the checkout, so build folders share entries.
if command -v ccache >/dev/null 2>&1; then
  export CMAKE_CXX_COMPILER_LAUNCHER=${CMAKE_CXX_COMPILER_LAUNCHER:-ccache}
  export CMAKE_C_COMPILER_LAUNCHER=${CMAKE_C_COMPILER_LAUNCHER:-ccache}
  export CCACHE_BASEDIR=${CCACHE_BASEDIR:-$(pwd)}
  export CCACHE_NOHASHDIR=${CCACHE_NOHASHDIR:-1}
fi
