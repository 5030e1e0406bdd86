# Install rules: the libraries, the public headers, the runner, a CMake package
# (find_package(LxBasic CONFIG) -> LxBasic::lxbasic, LxBasic::fltk) and pkg-config files.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(LX_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/LxBasic)

install(TARGETS lxbasic EXPORT LxBasicTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/lxbasic
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
# The installed runner finds the installed libraries beside it, wherever the prefix is.
file(RELATIVE_PATH LX_BIN_TO_LIB "/root/${CMAKE_INSTALL_BINDIR}" "/root/${CMAKE_INSTALL_LIBDIR}")
set_target_properties(lxbasic_runner PROPERTIES INSTALL_RPATH "$ORIGIN/${LX_BIN_TO_LIB}")
install(TARGETS lxbasic_runner RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(EXPORT LxBasicTargets NAMESPACE LxBasic:: DESTINATION ${LX_CMAKE_DIR})

# The .pc files find the prefix from their own place, so an installed tree may be moved (and
# `cmake --install --prefix` elsewhere than the configured prefix works).
set(LX_PC_DIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
if(IS_ABSOLUTE "${LX_PC_DIR}")
  set(LX_PC_PREFIX "${CMAKE_INSTALL_PREFIX}")
else()
  file(RELATIVE_PATH LX_PC_UP "/root/${LX_PC_DIR}" "/root")
  set(LX_PC_PREFIX "\${pcfiledir}/${LX_PC_UP}")
endif()
foreach(kind LIBDIR INCLUDEDIR)
  if(IS_ABSOLUTE "${CMAKE_INSTALL_${kind}}")
    set(LX_PC_${kind} "${CMAKE_INSTALL_${kind}}")
  else()
    set(LX_PC_${kind} "\${prefix}/${CMAKE_INSTALL_${kind}}")
  endif()
endforeach()
configure_file(${PROJECT_SOURCE_DIR}/cmake/lxbasic.pc.in ${PROJECT_BINARY_DIR}/lxbasic.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/lxbasic.pc DESTINATION ${LX_PC_DIR})

if(LX_WITH_FLTK)
  set_target_properties(lxbasic_fltk PROPERTIES INSTALL_RPATH "$ORIGIN")
  install(TARGETS lxbasic_fltk EXPORT LxBasicFltkTargets
          LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
          ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
          RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  install(EXPORT LxBasicFltkTargets NAMESPACE LxBasic:: DESTINATION ${LX_CMAKE_DIR})
  install(FILES ${PROJECT_SOURCE_DIR}/cmake/FindLxFLTK.cmake DESTINATION ${LX_CMAKE_DIR})
  configure_file(${PROJECT_SOURCE_DIR}/cmake/lxbasic-fltk.pc.in
                 ${PROJECT_BINARY_DIR}/lxbasic-fltk.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/lxbasic-fltk.pc
          DESTINATION ${LX_PC_DIR})
endif()

get_target_property(LX_ENGINE_TYPE lxbasic TYPE)
if(LX_ENGINE_TYPE STREQUAL "STATIC_LIBRARY")
  set(LX_ENGINE_STATIC TRUE)
else()
  set(LX_ENGINE_STATIC FALSE)
endif()
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/LxBasicConfig.cmake.in
                              ${PROJECT_BINARY_DIR}/LxBasicConfig.cmake
                              INSTALL_DESTINATION ${LX_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/LxBasicConfigVersion.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/LxBasicConfig.cmake
              ${PROJECT_BINARY_DIR}/LxBasicConfigVersion.cmake
        DESTINATION ${LX_CMAKE_DIR})
