#!/usr/bin/env bash
# Cost per unit of work of each workload, for the compiled lines, the reference evaluator
# (--reference) and Lua 5.4 doing the same work:
#   - machine instructions per unit, counted by callgrind, and
#   - wall time per unit, best of three runs.
# Each workload runs at two sizes and the figures are (cost(big) - cost(small)) /
# (units(big) - units(small)), so start-up and tear-down cancel out.
#
#   bench/measure.sh              build a Release tree in build-release/ and measure all
#   bench/measure.sh loop fib     measure only these workloads
#   BUILD=dir LUA=lua JOBS=n      override the build tree, the Lua interpreter, build jobs
set -euo pipefail
cd "$(dirname "$0")/.."
ROOT=$PWD
LUA=${LUA:-lua5.4}
source bench/common.sh

# workload  callgrind sizes  wall sizes   Lua callgrind sizes  Lua wall sizes
# (for fib the size is the argument n; the unit is a call and Fib(n) makes
#  2 * Fib(n + 1) - 1 of them. A recursion one level deeper also makes one more call frame
#  once, a start-up cost that the difference only spreads thin when the sizes are large.)
TABLE="
loop    2000 4000  50000 200000  100000 200000  2000000 8000000
array   2000 4000  50000 200000  100000 200000  2000000 8000000
string  1000 2000  10000 40000   10000 20000    200000 800000
fib     14 16      14 17         18 20          25 28
create  500 1000   5000 20000    2000 4000      50000 200000
while   2000 4000  20000 80000   100000 200000  2000000 8000000
"

for tool in valgrind "$LUA" cmake; do
  command -v "$tool" >/dev/null || { echo "measure.sh: $tool is needed" >&2; exit 1; }
done

build_lxbench

# units WORKLOAD SIZE
units() {
  if [ "$1" = fib ]; then
    local a=0 b=1 i
    for ((i = 0; i < $2 + 1; i++)); do local t=$((a + b)); a=$b; b=$t; done
    echo $((2 * a - 1))  # a = Fib(n + 1)
  else
    echo "$2"
  fi
}

# The command that runs WORKLOAD at SIZE in MODE (fast, reference or lua).
command_for() {
  local workload=$1 size=$2 mode=$3
  case $mode in
    lua) echo "$LUA $ROOT/bench/lua/$workload.lua $size" ;;
    *)
      local flag=""
      [ "$mode" = reference ] && flag="--reference"
      if [ "$workload" = create ]; then
        echo "$LXBENCH $flag --create $size"
      else
        echo "$LXBENCH $flag $ROOT/bench/workloads/$workload.bas $size"
      fi
      ;;
  esac
}

# per_unit WORKLOAD SMALL BIG MODE KIND -> instructions or nanoseconds per unit
per_unit() {
  local workload=$1 small=$2 big=$3 mode=$4 kind=$5
  local us ub cs cb
  us=$(units "$workload" "$small")
  ub=$(units "$workload" "$big")
  if [ "$kind" = ir ]; then
    cs=$(instructions "$(command_for "$workload" "$small" "$mode")")
    cb=$(instructions "$(command_for "$workload" "$big" "$mode")")
    per_unit_difference "$cs" "$cb" "$us" "$ub" 1 "%.0f"
  else
    cs=$(seconds "$(command_for "$workload" "$small" "$mode")")
    cb=$(seconds "$(command_for "$workload" "$big" "$mode")")
    per_unit_difference "$cs" "$cb" "$us" "$ub" 1e9 "%.1f"
  fi
}

wanted=" $* "
printf "%-8s %14s %14s %12s %14s %14s %12s\n" workload "Ir fast" "Ir reference" "Ir Lua" \
  "ns fast" "ns reference" "ns Lua"
echo "$TABLE" | while read -r name cs cb ws wb ls lb lws lwb; do
  [ -z "$name" ] && continue
  [ $# -gt 0 ] && [[ "$wanted" != *" $name "* ]] && continue
  printf "%-8s %14s %14s %12s %14s %14s %12s\n" "$name" \
    "$(per_unit "$name" "$cs" "$cb" fast ir)" \
    "$(per_unit "$name" "$cs" "$cb" reference ir)" \
    "$(per_unit "$name" "$ls" "$lb" lua ir)" \
    "$(per_unit "$name" "$ws" "$wb" fast ns)" \
    "$(per_unit "$name" "$ws" "$wb" reference ns)" \
    "$(per_unit "$name" "$lws" "$lwb" lua ns)"
done
