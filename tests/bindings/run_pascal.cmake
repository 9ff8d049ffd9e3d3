# Compiles the Free Pascal example against the built library and runs it; the program
# checks its own results and exits with the number of failures.
file(REMOVE_RECURSE ${WORK_DIR})
file(MAKE_DIRECTORY ${WORK_DIR})
execute_process(
  COMMAND ${FPC} -Mobjfpc -FU${WORK_DIR} -FE${WORK_DIR} -Fu${SOURCE_DIR} -Fl${LIB_DIR}
          -k-rpath=${LIB_DIR} ${SOURCE_DIR}/tsrt_demo.pas
  RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "fpc failed:\n${out}\n${err}")
endif()
execute_process(COMMAND ${WORK_DIR}/tsrt_demo RESULT_VARIABLE rc OUTPUT_VARIABLE out
                ERROR_VARIABLE err)
message("${out}${err}")
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "the Free Pascal example failed (${rc})")
endif()
