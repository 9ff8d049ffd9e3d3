# The Gambas component as a Gambas program meets it: the library and gb.tsruntime are
# installed into a scratch prefix that serves as the Gambas root (the system's own
# components linked in beside ours, GB_PATH pointing there). The test program is compiled
# with gbc3 and run with gbx3; it exits with the number of failures. Then programs with a
# wrong call are compiled, and gbc3 must refuse each.
file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)

include(${CMAKE_CURRENT_LIST_DIR}/../support/run_step.cmake)

install_components(${BUILD_DIR} ${prefix} runtime gambas REQUIRED
  lib/gambas3/gb.tsruntime.gambas lib/gambas3/gb.tsruntime.component
  share/gambas3/info/gb.tsruntime.info share/gambas3/info/gb.tsruntime.list)

# The rest of the Gambas root comes from the system's installation.
get_filename_component(gbx3 ${GBX3} REALPATH)
get_filename_component(system_root ${gbx3} DIRECTORY)
get_filename_component(system_root ${system_root} DIRECTORY)
foreach(dir lib/gambas3 share/gambas3/info)
  file(GLOB entries ${system_root}/${dir}/*)
  foreach(entry ${entries})
    get_filename_component(name ${entry} NAME)
    if(NOT EXISTS ${prefix}/${dir}/${name})
      file(CREATE_LINK ${entry} ${prefix}/${dir}/${name} SYMBOLIC)
    endif()
  endforeach()
endforeach()
file(GLOB_RECURSE library ${prefix}/lib*/libtsruntime.so.1)
get_filename_component(library_dir "${library}" DIRECTORY)

set(ENV{GB_PATH} ${prefix}/bin/gbx3)
set(ENV{LD_LIBRARY_PATH} ${library_dir})
set(ENV{TSRUNTIME_REGISTRY_DIR} ${WORK_DIR}/registry)
set(ENV{QT_QPA_PLATFORM} offscreen)

# gbc3 writes into the project: compile a copy.
file(COPY ${SOURCE_DIR}/ DESTINATION ${WORK_DIR}/program)
run(${GBC3} -a ${WORK_DIR}/program)
execute_process(COMMAND ${GBX3} ${WORK_DIR}/program RESULT_VARIABLE rc OUTPUT_VARIABLE out
                ERROR_VARIABLE err TIMEOUT 120)
message("${out}${err}")
if(NOT rc EQUAL 0 OR NOT out MATCHES "[0-9]+ passed, 0 failed")
  message(FATAL_ERROR "the Gambas test program failed (${rc})")
endif()

# Each case: the statements of Main after "Dim s As New clsZKString", and what gbc3 says.
# The first is right and must compile, so that the refusals come from the wrong calls.
set(cases
  "Print s.Filter(\"a-b\", \"-\")|"
  "Dim t As New clsZKStrng|Unknown identifier: clsZKStrng"
  "Print s.Trim(\"xx\", \"x\", xeZK_TRIM_TYP.xcZK_TRIM_LEFT)|Unknown identifier: xeZK_TRIM_TYP"
  "Print s.Filter(\"a-b\", \"-\", , , ByRef 4)|This expression cannot be passed by reference")
file(WRITE ${WORK_DIR}/wrong/.project
  "# Gambas Project File 3.0\nTitle=wrong call\nStartup=Main\nVersion=1.0.0\nComponent=gb.tsruntime\n")
foreach(case ${cases})
  string(REGEX REPLACE "\\|.*" "" statement "${case}")
  string(REGEX REPLACE ".*\\|" "" expected "${case}")
  file(WRITE ${WORK_DIR}/wrong/.src/Main.module
    "' Gambas module file\n\nPublic Sub Main()\n\n  Dim s As New clsZKString\n\n  ${statement}\n\nEnd\n")
  execute_process(COMMAND ${GBC3} -a ${WORK_DIR}/wrong RESULT_VARIABLE rc OUTPUT_VARIABLE out
                  ERROR_VARIABLE err)
  if(expected STREQUAL "" AND NOT rc EQUAL 0)
    message(FATAL_ERROR "gbc3 refused a right call (${statement}):\n${out}${err}")
  elseif(NOT expected STREQUAL "" AND (rc EQUAL 0 OR NOT "${out}${err}" MATCHES "${expected}"))
    message(FATAL_ERROR "gbc3 did not refuse ${statement} with \"${expected}\":\n${out}${err}")
  endif()
endforeach()
