# Runs the window host PROGRAM with --auto on a private X server (xvfb-run) and requires exit
# status 0 and a standard output equal to the file EXPECTED. Without xvfb-run the test is
# reported as skipped.
find_program(XVFB_RUN xvfb-run)
if(NOT XVFB_RUN)
  message("xvfb-run not found: skipped")
  return()
endif()
execute_process(COMMAND ${XVFB_RUN} -a ${PROGRAM} --auto OUTPUT_VARIABLE out ERROR_VARIABLE err
                RESULT_VARIABLE code INPUT_FILE /dev/null TIMEOUT 50)
file(READ ${EXPECTED} expected)
if(NOT "${code}" STREQUAL "0")
  message(FATAL_ERROR "exit status ${code}\nstdout:\n${out}\nstderr:\n${err}")
endif()
if(NOT "${out}" STREQUAL "${expected}")
  message(FATAL_ERROR "output differs.\n--- expected\n${expected}--- got\n${out}---\nstderr:\n${err}")
endif()
