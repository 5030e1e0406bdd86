# Tests of what a user meets around the engine: the installed package as a consumer uses it,
# and the README's C++ blocks.
# Outside programs built here use no sanitizer runtime, so a sanitizer build skips these.
find_program(LX_BASH bash)
if(LX_BASH AND NOT LX_SANITIZE)
  add_test(NAME package.consumers
           COMMAND ${LX_BASH} ${CMAKE_CURRENT_SOURCE_DIR}/package/run.sh ${PROJECT_SOURCE_DIR}
                   ${PROJECT_BINARY_DIR})
  # Builds the engine once more inside a consumer (add_subdirectory).
  set_tests_properties(package.consumers PROPERTIES TIMEOUT 1200 RUN_SERIAL TRUE)

  add_test(NAME readme.snippets
           COMMAND ${LX_BASH} ${CMAKE_CURRENT_SOURCE_DIR}/readme/run.sh ${PROJECT_SOURCE_DIR}
                   $<TARGET_FILE_DIR:lxbasic>)
  set_tests_properties(readme.snippets PROPERTIES TIMEOUT 300 ENVIRONMENT "TZ=UTC;LANG=C.UTF-8")
endif()

# The built-in reference is checked against the library's own table.
target_compile_definitions(test_builtins_reference PRIVATE LX_SOURCE_DIR="${PROJECT_SOURCE_DIR}")
