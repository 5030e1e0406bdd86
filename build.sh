#!/usr/bin/env bash
# Set-up, build and test entry point (see README.md).
#   ./build.sh run [SCRIPT]   install what is missing, build, run a sample script
#   ./build.sh test           install what is missing, build, run every test, then run the
#                             tests again in a build with AddressSanitizer and UBSan
set -euo pipefail
cd "$(dirname "$0")"
JOBS=${JOBS:-$(nproc)}

PACKAGES=(cmake g++ make libicu-dev libgtest-dev libgmock-dev libbenchmark-dev libfltk1.3-dev
          xvfb xdotool x11-apps imagemagick)

install_packages() {
  local missing=()
  for p in "${PACKAGES[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
  done
  [ ${#missing[@]} -eq 0 ] && return 0
  local sudo=""
  [ "$(id -u)" -ne 0 ] && sudo="sudo"
  $sudo apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
}

build() {  # build DIR [cmake options...]
  local dir=$1
  shift
  cmake -S . -B "$dir" -DCMAKE_BUILD_TYPE=RelWithDebInfo "$@" >/dev/null
  cmake --build "$dir" -j "$JOBS"
}

case "${1:-}" in
  run)
    install_packages
    build build
    ./build/lxbasic "${2:-examples/hello.bas}"
    ;;
  test)
    install_packages
    build build
    (cd build && ctest --output-on-failure -j "$JOBS")
    build build-sanitize -DLX_SANITIZE=ON
    (cd build-sanitize && ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 \
       LSAN_OPTIONS=suppressions="$PWD/../tests/lsan.supp" ctest --output-on-failure -j "$JOBS")
    ;;
  *)
    echo "usage: ./build.sh run [SCRIPT] | ./build.sh test" >&2
    exit 2
    ;;
esac
