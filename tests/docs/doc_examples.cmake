# The C++ samples of the README, the script object's header and the embedding guide are built
# and run as they are written, so that a sample that stops compiling or working is noticed.
include(${CMAKE_CURRENT_LIST_DIR}/extract_block.cmake)
set(LX_SCRIPT_HEADER ${CMAKE_SOURCE_DIR}/include/lxbasic/script.h)
set(LX_GUIDE ${CMAKE_SOURCE_DIR}/docs/embedding.md)
set(LX_DEBUG_GUIDE ${CMAKE_SOURCE_DIR}/docs/debugging.md)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${LX_SCRIPT_HEADER}
                                                               ${LX_GUIDE} ${LX_DEBUG_GUIDE})
set(LX_DOCS_OUT ${CMAKE_CURRENT_BINARY_DIR}/doc_examples)

# The README's C++ blocks are whole programs, built by the README block test.

# The header's sample is a comment; it needs the host object it names.
file(READ ${LX_SCRIPT_HEADER} header)
string(REGEX MATCH "//   lx::LxBasicScript script;\n(//   [^\n]*\n)+" comment "${header}")
string(REPLACE "\n//   " "\n" sample "${comment}")
string(REGEX REPLACE "^//   " "" sample "${sample}")
file(CONFIGURE OUTPUT ${LX_DOCS_OUT}/header_sample.cpp @ONLY CONTENT [[
#include <iostream>
#include <memory>
#include <string>

#include "lxbasic/bridge.h"
#include "lxbasic/script.h"
#include "lxbasic/text.h"

class MyHostObject : public lx::Object {
 public:
  std::string greet(const std::string& who) { return "Hello, " + who; }
};

int main() {
  lx::ClassBuilder<MyHostObject>("MyHostObject").method("Greet:", &MyHostObject::greet);
@sample@
  std::cout << lx::toUtf8(lx::toText(result)) << '\n';
  return script.failed() ? 1 : 0;
}
]])

# The guide's first host is a whole program.
lx_code_block(${LX_GUIDE} "<!-- first-host -->" guide)
file(WRITE ${LX_DOCS_OUT}/guide_first_host.cpp "${guide}")

# So is the debugging guide's debugger loop; what it prints is the guide's next block.
lx_code_block(${LX_DEBUG_GUIDE} "<!-- debugger-host -->" debugger)
file(WRITE ${LX_DOCS_OUT}/debugger_host.cpp "${debugger}")
file(READ ${LX_DEBUG_GUIDE} debugGuide)
string(REGEX MATCH "It prints:\n\n```\n([^`]*)```" printed "${debugGuide}")

set(LX_EXPECT_header_sample "Hello, world\n")
set(LX_EXPECT_debugger_host "${CMAKE_MATCH_1}")
set(LX_EXPECT_guide_first_host "target 20.5C, up 5000000000 ms\nwarmer: 22.5\n")
foreach(name header_sample guide_first_host debugger_host)
  add_executable(doc_${name} ${LX_DOCS_OUT}/${name}.cpp)
  target_link_libraries(doc_${name} PRIVATE lxbasic)
  file(WRITE ${LX_DOCS_OUT}/${name}.expected "${LX_EXPECT_${name}}")
  add_test(NAME docs.${name}
           COMMAND ${CMAKE_COMMAND} -DPROGRAM=$<TARGET_FILE:doc_${name}>
                   -DEXPECTED=${LX_DOCS_OUT}/${name}.expected
                   -P ${CMAKE_SOURCE_DIR}/examples/check_output.cmake)
  set_tests_properties(docs.${name} PROPERTIES ENVIRONMENT "LANG=C.UTF-8" TIMEOUT 60)
endforeach()

add_test(NAME docs.gui_host_listing
         COMMAND ${CMAKE_COMMAND} -DDOC=${LX_GUIDE} "-DMARKER=<!-- gui-host -->"
                 -DSOURCE=${CMAKE_SOURCE_DIR}/examples/gui_host/gui_host.cpp
                 -P ${CMAKE_CURRENT_LIST_DIR}/compare_listing.cmake)
