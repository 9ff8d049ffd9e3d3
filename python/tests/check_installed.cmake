# Installs the library and the Python package into a scratch prefix, then imports the package
# from there with the system Python (-I: nothing from the environment or the build tree may
# help) and makes one late-bound call: the installed extension finds the installed library.
# The type stubs are installed beside the package.
file(REMOVE_RECURSE ${WORK_DIR})
foreach(component runtime python)
  execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${WORK_DIR}/prefix
                          --component ${component}
                  OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
endforeach()
execute_process(COMMAND ${PYTHON} -I -c [=[
import sys
sys.path.insert(0, sys.argv[1])
import tsruntime
assert tsruntime.__file__.startswith(sys.argv[1]), tsruntime.__file__
assert tsruntime.Dispatch("TSRuntimeLib.clsZKRunTimeLib").Init() is True
import os
here = os.listdir(os.path.dirname(tsruntime.__file__))
assert {"__init__.pyi", "constants.pyi", "py.typed"} <= set(here), here
]=] ${WORK_DIR}/prefix/${PYTHON_DIR} COMMAND_ERROR_IS_FATAL ANY)
