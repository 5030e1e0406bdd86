# Requires the C++ block after MARKER in DOC to be the file SOURCE, byte for byte.
include(${CMAKE_CURRENT_LIST_DIR}/extract_block.cmake)
lx_code_block(${DOC} "${MARKER}" listing)
file(READ ${SOURCE} source)
if(NOT "${listing}" STREQUAL "${source}")
  message(FATAL_ERROR "the listing in ${DOC} differs from ${SOURCE}")
endif()
