# Installs the library and the Python package into a scratch prefix, then imports the
# package from there with the system Python and makes one late-bound call, so that the
# installed extension is shown to find the installed library.
file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)

foreach(component Unspecified python)
  execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix}
                          --component ${component}
                  RESULT_VARIABLE rc ERROR_VARIABLE err OUTPUT_QUIET)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "installing ${component} failed:\n${err}")
  endif()
endforeach()

set(script [=[
import sys
sys.path.insert(0, sys.argv[1])
import tsruntime
assert tsruntime.__file__.startswith(sys.argv[1]), tsruntime.__file__
print("Init:", tsruntime.Dispatch("TSRuntimeLib.clsZKRunTimeLib").Init())
]=])
# -I: nothing from the environment or the build tree may help the import.
execute_process(COMMAND ${PYTHON} -I -c "${script}" ${prefix}/${PYTHON_DIR}
                RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
if(NOT rc EQUAL 0 OR NOT out MATCHES "Init: True")
  message(FATAL_ERROR "the installed package does not work:\n${out}\n${err}")
endif()
