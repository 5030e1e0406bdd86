#!/bin/sh
# Builds the script fuzzer (clang, libFuzzer, ASan, UBSan) and runs it for SECONDS seconds
# (default 180). Seeds: the script tests and the regression inputs; words: lxbasic.dict.
#   tests/fuzz/run.sh          # a few minutes, as CI runs it
#   tests/fuzz/run.sh 3600     # the hour-long run
# A finding is written to the build directory as crash-*, leak-* or timeout-*; add it to
# tests/fuzz/regressions/ once fixed. LX_FUZZ_BUILD chooses the build directory.
set -eu
seconds=${1:-180}
here=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$here/../.." && pwd)
build=${LX_FUZZ_BUILD:-$root/build-fuzz}
launcher=""
if command -v ccache >/dev/null 2>&1; then launcher="-DCMAKE_CXX_COMPILER_LAUNCHER=ccache"; fi

CC=clang CXX=clang++ cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DLX_FUZZ=ON -DLX_WITH_FLTK=OFF $launcher >/dev/null
cmake --build "$build" -j2 --target fuzz_script

corpus="$build/fuzz-corpus"
mkdir -p "$corpus"
cp "$root"/tests/scripts/*.bas "$corpus"/ 2>/dev/null || true

cd "$build"
# Scripts have their own 300 ms time limit and 32 MiB memory limit (see fuzz_script.cpp);
# the fuzzer's limits only catch what gets past them. AddressSanitizer keeps freed memory in
# quarantine and never returns its size classes to the system, so the process's peak grows
# well past what any one script holds; a smaller quarantine keeps it under the RSS limit.
export ASAN_OPTIONS="${ASAN_OPTIONS:-quarantine_size_mb=64}"
exec "$build/tests/fuzz/fuzz_script" -max_total_time="$seconds" -timeout=10 \
  -rss_limit_mb=2048 -max_len=65536 -dict="$here/lxbasic.dict" \
  "$corpus" "$here/regressions"
