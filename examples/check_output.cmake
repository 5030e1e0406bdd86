# Runs PROGRAM (with "--console SCRIPT" when SCRIPT is given) and requires exit status 0 and a
# standard output equal to the file EXPECTED. A script that includes this one may set WRAPPER
# (a command that runs the program) and ARGS (further arguments).
set(command ${WRAPPER} ${PROGRAM} ${ARGS})
if(DEFINED SCRIPT)
  list(APPEND command --console ${SCRIPT})
endif()
execute_process(COMMAND ${command} OUTPUT_VARIABLE out ERROR_VARIABLE err RESULT_VARIABLE code
                INPUT_FILE /dev/null TIMEOUT 50)
file(READ ${EXPECTED} expected)
if(NOT "${code}" STREQUAL "0")
  message(FATAL_ERROR "exit status ${code}\nstdout:\n${out}\nstderr:\n${err}")
endif()
if(NOT "${out}" STREQUAL "${expected}")
  message(FATAL_ERROR "output differs.\n--- expected\n${expected}--- got\n${out}---\nstderr:\n${err}")
endif()
