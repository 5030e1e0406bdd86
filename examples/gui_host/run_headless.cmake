# Runs the window host PROGRAM with --auto on a private X server (xvfb-run) and checks it as
# check_output.cmake does. Without xvfb-run the test is reported as skipped.
find_program(XVFB_RUN xvfb-run)
if(NOT XVFB_RUN)
  message("xvfb-run not found: skipped")
  return()
endif()
set(WRAPPER ${XVFB_RUN} -a)
set(ARGS --auto)
include(${CMAKE_CURRENT_LIST_DIR}/../check_output.cmake)
