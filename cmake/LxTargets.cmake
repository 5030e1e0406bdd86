# The engine's libraries. Every source is compiled once, into lxbasic_objects; from those
# objects come
#   lxbasic_internal  a static library with every symbol, for the unit tests and benchmarks
#                     that reach into the engine's internals;
#   lxbasic           the library hosts link (shared or static, as BUILD_SHARED_LIBS says),
#                     exporting only what the public headers mark LX_API.
# The FLTK dialogs are their own library, lxbasic_fltk, so the engine needs only ICU and the
# C++ runtime.

# New sources under src/ are picked up without editing this list.
file(GLOB_RECURSE LX_SOURCES CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/*.cpp)
set(LX_FLTK_SOURCES ${LX_SOURCES})
list(FILTER LX_SOURCES EXCLUDE REGEX ".*/dialogs/fltk_[^/]*\\.cpp$")
list(FILTER LX_FLTK_SOURCES INCLUDE REGEX ".*/dialogs/fltk_[^/]*\\.cpp$")

function(lx_hidden_by_default target)
  set_target_properties(${target} PROPERTIES CXX_VISIBILITY_PRESET hidden
                                             VISIBILITY_INLINES_HIDDEN ON
                                             POSITION_INDEPENDENT_CODE ON)
endfunction()

add_library(lxbasic_objects OBJECT ${LX_SOURCES})
lx_hidden_by_default(lxbasic_objects)
target_include_directories(lxbasic_objects
  PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
  PRIVATE ${PROJECT_SOURCE_DIR}/src)
target_link_libraries(lxbasic_objects PUBLIC Threads::Threads ICU::uc ICU::i18n)

add_library(lxbasic_internal STATIC $<TARGET_OBJECTS:lxbasic_objects>)
target_include_directories(lxbasic_internal PUBLIC ${PROJECT_SOURCE_DIR}/include
                                                   ${PROJECT_SOURCE_DIR}/src)
target_link_libraries(lxbasic_internal PUBLIC Threads::Threads ICU::uc ICU::i18n)

add_library(lxbasic $<TARGET_OBJECTS:lxbasic_objects>)
add_library(LxBasic::lxbasic ALIAS lxbasic)
target_include_directories(lxbasic PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
                                          $<INSTALL_INTERFACE:include>)
target_link_libraries(lxbasic PUBLIC Threads::Threads PRIVATE ICU::uc ICU::i18n)
set_target_properties(lxbasic PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION 1
                                         EXPORT_NAME lxbasic)

if(LX_WITH_FLTK)
  add_library(lxbasic_fltk ${LX_FLTK_SOURCES})
  add_library(LxBasic::fltk ALIAS lxbasic_fltk)
  lx_hidden_by_default(lxbasic_fltk)
  target_include_directories(lxbasic_fltk PRIVATE ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(lxbasic_fltk PUBLIC lxbasic PRIVATE LxFLTK::fltk)
  set_target_properties(lxbasic_fltk PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION 1
                                                EXPORT_NAME fltk)
endif()
