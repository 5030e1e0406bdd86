# The graphical dialogs, exercised on a private X server (tests/gui). Exit status 77 marks
# the test skipped where no X server can be started.
if(LX_WITH_FLTK)
  add_executable(test_gui_dialogs ${CMAKE_CURRENT_SOURCE_DIR}/gui/test_gui_dialogs.cpp
                                ${CMAKE_CURRENT_SOURCE_DIR}/gui/label_metrics.cpp)
  target_include_directories(test_gui_dialogs PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
  target_link_libraries(test_gui_dialogs PRIVATE lxbasic_fltk LxFLTK::fltk GTest::gtest)
  target_compile_definitions(test_gui_dialogs
                             PRIVATE LX_GUI_ARTIFACTS="${PROJECT_BINARY_DIR}/test-artifacts")
  add_test(NAME gui.dialogs COMMAND test_gui_dialogs)
  set_tests_properties(gui.dialogs PROPERTIES SKIP_RETURN_CODE 77 TIMEOUT 240
                                              ENVIRONMENT "LANG=C.UTF-8")
endif()
