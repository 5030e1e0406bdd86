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
install(TARGETS lxbasic_runner RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(EXPORT LxBasicTargets NAMESPACE LxBasic:: DESTINATION ${LX_CMAKE_DIR})

if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
  set(LX_PC_LIBDIR "${CMAKE_INSTALL_LIBDIR}")
else()
  set(LX_PC_LIBDIR "\${prefix}/${CMAKE_INSTALL_LIBDIR}")
endif()
if(IS_ABSOLUTE "${CMAKE_INSTALL_INCLUDEDIR}")
  set(LX_PC_INCLUDEDIR "${CMAKE_INSTALL_INCLUDEDIR}")
else()
  set(LX_PC_INCLUDEDIR "\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}")
endif()
configure_file(${PROJECT_SOURCE_DIR}/cmake/lxbasic.pc.in ${PROJECT_BINARY_DIR}/lxbasic.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/lxbasic.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

if(LX_WITH_FLTK)
  install(TARGETS lxbasic_fltk EXPORT LxBasicFltkTargets
          LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
          ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
          RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  install(EXPORT LxBasicFltkTargets NAMESPACE LxBasic:: DESTINATION ${LX_CMAKE_DIR})
  install(FILES ${PROJECT_SOURCE_DIR}/cmake/FindLxFLTK.cmake DESTINATION ${LX_CMAKE_DIR})
  configure_file(${PROJECT_SOURCE_DIR}/cmake/lxbasic-fltk.pc.in
                 ${PROJECT_BINARY_DIR}/lxbasic-fltk.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/lxbasic-fltk.pc
          DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
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
