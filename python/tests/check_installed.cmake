# Installs the library and the Python package into a scratch prefix, then imports the package
# from there with the system Python (-I: nothing from the environment or the build tree may
# help) and makes one late-bound call: the installed extension finds the installed library.
# The type stubs are installed beside the package.
file(REMOVE_RECURSE ${WORK_DIR})
include(${CMAKE_CURRENT_LIST_DIR}/../../tests/support/run_step.cmake)
install_components(${BUILD_DIR} ${WORK_DIR}/prefix runtime python REQUIRED
  ${PYTHON_DIR}/tsruntime/__init__.pyi ${PYTHON_DIR}/tsruntime/constants.pyi ${PYTHON_DIR}/tsruntime/py.typed)
execute_process(COMMAND ${PYTHON} -I -c [=[
import sys
sys.path.insert(0, sys.argv[1])
import tsruntime
assert tsruntime.__file__.startswith(sys.argv[1]), tsruntime.__file__
assert tsruntime.Dispatch("TSRuntimeLib.clsZKRunTimeLib").Init() is True
]=] ${WORK_DIR}/prefix/${PYTHON_DIR} COMMAND_ERROR_IS_FATAL ANY)
