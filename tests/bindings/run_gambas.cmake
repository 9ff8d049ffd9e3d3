# Compiles the Gambas example project in a copy (the compiler writes into the project)
# and runs it against the built library; the program exits with the number of failures.
file(REMOVE_RECURSE ${WORK_DIR})
file(COPY ${SOURCE_DIR}/ DESTINATION ${WORK_DIR})
execute_process(COMMAND ${GBC3} -a ${WORK_DIR} RESULT_VARIABLE rc OUTPUT_VARIABLE out
                ERROR_VARIABLE err)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "gbc3 failed:\n${out}\n${err}")
endif()
set(ENV{LD_LIBRARY_PATH} ${LIB_DIR})
execute_process(COMMAND ${GBX3} ${WORK_DIR} RESULT_VARIABLE rc OUTPUT_VARIABLE out
                ERROR_VARIABLE err)
message("${out}${err}")
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "the Gambas example failed (${rc})")
endif()
