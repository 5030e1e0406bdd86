# The engine's libraries. Every source is compiled once, into the object library of its room
# (below); from those objects come
#   lxbasic_internal  a static library with every symbol, for the unit tests and benchmarks
#                     that reach into the engine's internals;
#   lxbasic           the library hosts link (shared or static, as BUILD_SHARED_LIBS says),
#                     exporting only what the public headers mark LX_API.
# The FLTK dialogs are their own library, lxbasic_fltk, so the engine needs only ICU and the
# C++ runtime.

# Each room of src/ is a target of its own, compiled with an include folder that shows it
# only the rooms it is declared to use (symbolic links under <build>/rooms/<room>/), so an
# include across a room boundary that is not declared here fails to compile. The rooms and
# what each may include are described in docs/architecture.md; keep the two in step.
# New sources in a room are picked up without editing this file.

function(lx_hidden_by_default target)
  set_target_properties(${target} PROPERTIES CXX_VISIBILITY_PRESET hidden
                                             VISIBILITY_INLINES_HIDDEN ON
                                             POSITION_INDEPENDENT_CODE ON)
endfunction()

# lx_room(<target> ROOM <folder> SOURCES <sources...> USES <rooms...>): an object library of
# the room's sources that sees its own folder, the rooms it USES and the public headers.
function(lx_room target)
  cmake_parse_arguments(ARG "" "ROOM" "SOURCES;USES" ${ARGN})
  set(view ${PROJECT_BINARY_DIR}/rooms/${target})
  file(REMOVE_RECURSE ${view})
  file(MAKE_DIRECTORY ${view})
  foreach(room IN LISTS ARG_USES ARG_ROOM)
    file(CREATE_LINK ${PROJECT_SOURCE_DIR}/src/${room} ${view}/${room} SYMBOLIC)
  endforeach()
  add_library(${target} OBJECT ${ARG_SOURCES})
  lx_hidden_by_default(${target})
  target_include_directories(${target}
    PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
    PRIVATE ${view})
  target_link_libraries(${target} PUBLIC Threads::Threads ICU::uc ICU::i18n)
endfunction()

function(lx_room_sources out room)
  file(GLOB sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/${room}/*.cpp)
  set(${out} ${sources} PARENT_SCOPE)
endfunction()

lx_room_sources(LX_FOUNDATION_SOURCES foundation)
lx_room_sources(LX_BRIDGE_SOURCES bridge)
lx_room_sources(LX_SYNTAX_SOURCES syntax)
lx_room_sources(LX_EXECUTION_SOURCES execution)
lx_room_sources(LX_BUILTINS_SOURCES builtins)
lx_room_sources(LX_COMPILER_SOURCES compiler)
lx_room_sources(LX_INTERPRETER_SOURCES interpreter)
lx_room_sources(LX_DIALOGS_SOURCES dialogs)
lx_room_sources(LX_DEBUG_SOURCES debug)
set(LX_FLTK_SOURCES ${LX_DIALOGS_SOURCES})
list(FILTER LX_DIALOGS_SOURCES EXCLUDE REGEX ".*/dialogs/fltk_[^/]*\\.cpp$")
list(FILTER LX_FLTK_SOURCES INCLUDE REGEX ".*/dialogs/fltk_[^/]*\\.cpp$")

lx_room(lx_foundation ROOM foundation SOURCES ${LX_FOUNDATION_SOURCES})
lx_room(lx_bridge ROOM bridge SOURCES ${LX_BRIDGE_SOURCES} USES foundation)
lx_room(lx_syntax ROOM syntax SOURCES ${LX_SYNTAX_SOURCES} USES foundation)
lx_room(lx_execution ROOM execution SOURCES ${LX_EXECUTION_SOURCES} USES foundation)
lx_room(lx_dialogs ROOM dialogs SOURCES ${LX_DIALOGS_SOURCES} USES foundation)
lx_room(lx_builtins ROOM builtins SOURCES ${LX_BUILTINS_SOURCES}
        USES foundation bridge dialogs)
# The compiled form reaches the interpreter only through the frame (execution/frame.h).
lx_room(lx_compiler ROOM compiler SOURCES ${LX_COMPILER_SOURCES}
        USES foundation bridge syntax execution)
# Breakpoints, stepping and pauses; what it asks of the script is its DebugTarget interface.
lx_room(lx_debug ROOM debug SOURCES ${LX_DEBUG_SOURCES})
lx_room(lx_interpreter ROOM interpreter SOURCES ${LX_INTERPRETER_SOURCES}
        USES foundation bridge syntax execution builtins compiler debug)

set(LX_ROOMS lx_foundation lx_bridge lx_syntax lx_execution lx_dialogs lx_builtins lx_compiler lx_debug
             lx_interpreter)
set(LX_OBJECTS)
foreach(room IN LISTS LX_ROOMS)
  list(APPEND LX_OBJECTS $<TARGET_OBJECTS:${room}>)
endforeach()

add_library(lxbasic_internal STATIC ${LX_OBJECTS})
target_include_directories(lxbasic_internal PUBLIC ${PROJECT_SOURCE_DIR}/include
                                                   ${PROJECT_SOURCE_DIR}/src)
target_link_libraries(lxbasic_internal PUBLIC Threads::Threads ICU::uc ICU::i18n)

add_library(lxbasic ${LX_OBJECTS})
add_library(LxBasic::lxbasic ALIAS lxbasic)
target_include_directories(lxbasic PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
                                          $<INSTALL_INTERFACE:include>)
target_link_libraries(lxbasic PUBLIC Threads::Threads PRIVATE ICU::uc ICU::i18n)
set_target_properties(lxbasic PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION 1
                                         EXPORT_NAME lxbasic)

if(LX_WITH_FLTK)
  lx_room(lx_fltk_dialogs ROOM dialogs SOURCES ${LX_FLTK_SOURCES} USES foundation)
  target_link_libraries(lx_fltk_dialogs PRIVATE LxFLTK::fltk)
  add_library(lxbasic_fltk $<TARGET_OBJECTS:lx_fltk_dialogs>)
  add_library(LxBasic::fltk ALIAS lxbasic_fltk)
  lx_hidden_by_default(lxbasic_fltk)
  target_link_libraries(lxbasic_fltk PUBLIC lxbasic PRIVATE LxFLTK::fltk)
  set_target_properties(lxbasic_fltk PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION 1
                                                EXPORT_NAME fltk)
endif()
