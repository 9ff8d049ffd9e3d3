# Steps of a script-mode test; a failing step stops the test with its output.

# run(COMMAND...): the step's standard output is left in last_output.
function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "failed: ${ARGN}\n${out}\n${err}")
  endif()
  set(last_output "${out}" PARENT_SCOPE)
endfunction()

# expect(REGEX COMMAND...): run(COMMAND...), whose output must match REGEX.
function(expect regex)
  run(${ARGN})
  if(NOT last_output MATCHES "${regex}")
    message(FATAL_ERROR "${ARGN} printed:\n${last_output}")
  endif()
endfunction()

# install_components(BUILD_DIR PREFIX COMPONENT... REQUIRED FILE...): installs the
# components into PREFIX and checks that each FILE (relative to it) is there.
function(install_components build_dir prefix)
  cmake_parse_arguments(PARSE_ARGV 2 arg "" "" "REQUIRED")
  foreach(component ${arg_UNPARSED_ARGUMENTS})
    run(${CMAKE_COMMAND} --install ${build_dir} --prefix ${prefix} --component ${component})
  endforeach()
  foreach(required ${arg_REQUIRED})
    if(NOT EXISTS ${prefix}/${required})
      message(FATAL_ERROR "not installed: ${required}")
    endif()
  endforeach()
endfunction()
