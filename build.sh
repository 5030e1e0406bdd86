#!/usr/bin/env bash
# Set-up, build and test entry point (see README.md).
#   ./build.sh run [SCRIPT]   install what is missing, build, run a sample script
#   ./build.sh test           install what is missing, build, run every test, then run the
#                             tests again in a build with AddressSanitizer and UBSan
set -euo pipefail
cd "$(dirname "$0")"
JOBS=${JOBS:-$(nproc)}

# What building the library and the runner needs. FLTK is found without its fluid program
# and OpenGL headers, so recommends stay out.
RUN_PACKAGES=(cmake g++ make libicu-dev libfltk1.3-dev libedit-dev)
# What the tests need besides: GoogleTest, pkg-config for the package test, Google Benchmark
# for bench/, and an X server, xdotool and ImageMagick's import for the window tests.
TEST_PACKAGES=(libgtest-dev libgmock-dev libbenchmark-dev pkg-config xvfb xdotool imagemagick
               clang libclang-rt-14-dev)

install_packages() {  # install_packages PACKAGE...
  local missing=()
  for p in "$@"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
  done
  [ ${#missing[@]} -eq 0 ] && return 0
  local sudo=""
  [ "$(id -u)" -ne 0 ] && sudo="sudo"
  $sudo apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
}

configure() {  # configure DIR [cmake options...]
  local dir=$1
  shift
  cmake -S . -B "$dir" -DCMAKE_BUILD_TYPE=RelWithDebInfo "$@" >/dev/null
}

build() {  # build DIR [cmake options...]
  configure "$@"
  cmake --build "$1" -j "$JOBS"
}

case "${1:-}" in
  run)
    install_packages "${RUN_PACKAGES[@]}"
    # Tests stay unconfigured until `test` asks for them, so GoogleTest need not be there yet.
    configure build -DLX_BUILD_TESTS=OFF
    cmake --build build -j "$JOBS" --target lxbasic_runner
    ./build/lxbasic "${2:-examples/hello.bas}"
    ;;
  test)
    install_packages "${RUN_PACKAGES[@]}" "${TEST_PACKAGES[@]}"
    build build -DLX_BUILD_TESTS=ON
    (cd build && ctest --output-on-failure -j "$JOBS")
    build build-sanitize -DLX_SANITIZE=ON -DLX_BUILD_TESTS=ON
    (cd build-sanitize && ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
       LSAN_OPTIONS=suppressions="$PWD/../tests/lsan.supp" ctest --output-on-failure -j "$JOBS")
    tests/tsan/run.sh                # the threaded tests under ThreadSanitizer
    tests/fuzz/run.sh 120            # libFuzzer on script text, two minutes
    ;;
  *)
    echo "usage: ./build.sh run [SCRIPT] | ./build.sh test" >&2
    exit 2
    ;;
esac
