# The Python package is built for the system interpreter, which Debian's pybind11 and
# pytest serve; another python3 may come first on the PATH. Override with
# -DPython_EXECUTABLE=...
if(NOT Python_EXECUTABLE)
  set(Python_EXECUTABLE /usr/bin/python3)
endif()

# Where the system Python looks for packages under the install prefix:
# lib/python3.11/dist-packages for /usr/local, lib/python3/dist-packages for /usr.
execute_process(
  COMMAND ${Python_EXECUTABLE} -I -c [=[
import os, sys, sysconfig
prefix = os.path.normpath(sys.argv[1])
found = [p for p in sys.path
         if os.path.relpath(p, prefix).startswith("lib" + os.sep)
         and os.path.basename(p) in ("dist-packages", "site-packages")]
if not found:
    scheme = "deb_system" if "deb_system" in sysconfig.get_scheme_names() else "posix_prefix"
    found = [sysconfig.get_path("platlib", scheme, vars={"base": prefix, "platbase": prefix})]
print(os.path.relpath(found[0], prefix), end="")
]=] ${CMAKE_INSTALL_PREFIX}
  OUTPUT_VARIABLE default_python_dir
  COMMAND_ERROR_IS_FATAL ANY)
set(TSRUNTIME_PYTHON_INSTALL_DIR ${default_python_dir} CACHE STRING
  "Where the tsruntime package is installed, relative to the install prefix")
