#!/usr/bin/env bash
# What a crossing between the host and a script costs, in machine instructions per crossing
# (callgrind, two sizes, the difference divided by the difference in crossings):
#   - a script calling a host method (BenchHost's Twice(n)) in a FOR loop, over the same loop
#     without the call (bench/workloads/hostcall.bas against hostloop.bas), and
#   - the host calling a one-line script FUNCTION through call() (lxbench --call N),
# for the compiled lines and for the reference evaluator.
#
#   bench/crossings.sh        build a Release tree in build-release/ and measure
#   BUILD=dir JOBS=n          override the build tree and the build jobs
set -euo pipefail
cd "$(dirname "$0")/.."
source bench/common.sh

command -v valgrind >/dev/null || { echo "crossings.sh: valgrind is needed" >&2; exit 1; }
build_lxbench

SMALL=2000
BIG=4000
per_call() {  # MODE_FLAG WHAT
  local flag=$1 a b
  if [ "$2" = call ]; then
    a=$(instructions "$LXBENCH $flag --call $SMALL")
    b=$(instructions "$LXBENCH $flag --call $BIG")
  else
    a=$(instructions "$LXBENCH $flag bench/workloads/$2.bas $SMALL")
    b=$(instructions "$LXBENCH $flag bench/workloads/$2.bas $BIG")
  fi
  per_unit_difference "$a" "$b" "$SMALL" "$BIG" 1 "%.0f"
}

printf "%-44s %10s %12s\n" "crossing (instructions per crossing)" "fast" "reference"
for mode in fast reference; do
  flag=""
  [ "$mode" = reference ] && flag="--reference"
  host=$(($(per_call "$flag" hostcall) - $(per_call "$flag" hostloop)))
  call=$(per_call "$flag" call)
  eval "host_$mode=$host call_$mode=$call"
done
printf "%-44s %10s %12s\n" "script -> host method, over the loop" "$host_fast" "$host_reference"
printf "%-44s %10s %12s\n" "host -> script FUNCTION through call()" "$call_fast" "$call_reference"
