# Instrumented builds beyond LX_SANITIZE. Included by the top-level CMakeLists before any
# target is made, so that the engine itself is instrumented too.
#   LX_TSAN  ThreadSanitizer, for the threaded tests (tests/tsan/run.sh).
#   LX_FUZZ  libFuzzer with AddressSanitizer and UndefinedBehaviorSanitizer, clang only;
#            builds tests/fuzz (tests/fuzz/run.sh).
option(LX_TSAN "Build with ThreadSanitizer" OFF)
option(LX_FUZZ "Build the libFuzzer target (clang)" OFF)

if(LX_TSAN AND (LX_SANITIZE OR LX_FUZZ))
  message(FATAL_ERROR "LX_TSAN cannot be combined with LX_SANITIZE or LX_FUZZ")
endif()
if(LX_TSAN)
  add_compile_options(-fsanitize=thread -fno-omit-frame-pointer)
  add_link_options(-fsanitize=thread)
endif()
if(LX_FUZZ)
  if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    message(FATAL_ERROR "LX_FUZZ needs clang (CXX=clang++)")
  endif()
  add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-omit-frame-pointer
                      -fno-sanitize-recover=undefined)
  add_link_options(-fsanitize=address,undefined)
endif()
