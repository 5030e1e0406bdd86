#!/usr/bin/env bash
# Does memory stay flat over a long run? Runs the loop workload (bench/workloads/loop.bas) at
# 1 million and at 10 million iterations and compares the peak resident set sizes; more than
# 10 % growth fails. Uses the Release tree of bench/measure.sh.
#
#   bench/memory.sh               the compiled lines
#   bench/memory.sh --reference   the reference evaluator (slow: a few minutes)
#   SMALL=n BIG=n                 other sizes
set -euo pipefail
cd "$(dirname "$0")/.."
BUILD=${BUILD:-$PWD/build-release}
SMALL=${SMALL:-1000000}
BIG=${BIG:-10000000}
MODE=()
[ "${1:-}" = --reference ] && MODE=(--reference)

cmake -S . -B "$BUILD" -DCMAKE_BUILD_TYPE=Release -DLX_BUILD_TESTS=OFF \
  -DCMAKE_CXX_COMPILER_LAUNCHER="$(command -v ccache || true)" >/dev/null
cmake --build "$BUILD" -j "${JOBS:-2}" --target lxbench >/dev/null

peak() {
  "$BUILD/bench/lxbench" "${MODE[@]}" --memory bench/workloads/loop.bas "$1" 2>&1 >/dev/null |
    sed -n 's/^peak resident set: \([0-9]*\) KiB$/\1/p'
}

small=$(peak "$SMALL")
big=$(peak "$BIG")
echo "peak resident set: $small KiB after $SMALL iterations, $big KiB after $BIG"
if [ $((big * 10)) -gt $((small * 11)) ]; then
  echo "memory grows with the number of iterations" >&2
  exit 1
fi
echo "flat"
