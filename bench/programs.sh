#!/usr/bin/env bash
# Realistic programs against Lua 5.4: each program in bench/programs/ (NAME.bas, with its Lua
# twin NAME.lua computing the same output) repeats one job @N@ times. For each program this
# prints the machine instructions per job (callgrind, measured at two repeat counts so that
# start-up cancels out) of the compiled lines and of Lua, their ratio, and the median ratio.
# Before measuring, each program's output must match its twin's, on the compiled lines and
# on the reference evaluator alike; a mismatch fails the run.
#
#   bench/programs.sh               build a Release tree in build-release/ and measure all
#   bench/programs.sh sieve queens  only these programs
#   BUILD=dir LUA=lua JOBS=n        override the build tree, the Lua interpreter, build jobs
#   SMALL=n BIG=n                   other repeat counts (default 2 and 6)
set -euo pipefail
cd "$(dirname "$0")/.."
LUA=${LUA:-lua5.4}
SMALL=${SMALL:-2}
BIG=${BIG:-6}
source bench/common.sh

for tool in valgrind "$LUA" cmake; do
  command -v "$tool" >/dev/null || { echo "programs.sh: $tool is needed" >&2; exit 1; }
done
build_lxbench

names=("$@")
if [ ${#names[@]} -eq 0 ]; then
  for f in bench/programs/*.bas; do names+=("$(basename "$f" .bas)"); done
fi

ratios=()
printf "%-10s %14s %14s %8s\n" program "Ir LxBasic" "Ir Lua" ratio
for name in "${names[@]}"; do
  bas=bench/programs/$name.bas
  lua=bench/programs/$name.lua
  [ -f "$bas" ] && [ -f "$lua" ] || { echo "programs.sh: no program $name" >&2; exit 1; }
  expected=$("$LUA" "$lua" 1)
  for mode in "" --reference; do
    got=$("$LXBENCH" $mode "$bas" 1)
    if [ "$got" != "$expected" ]; then
      echo "programs.sh: $name${mode:+ ($mode)} answers '$got', Lua '$expected'" >&2
      exit 1
    fi
  done
  ir_lx=$(per_unit_difference "$(instructions "$LXBENCH $bas $SMALL")" \
    "$(instructions "$LXBENCH $bas $BIG")" "$SMALL" "$BIG" 1 "%.0f")
  ir_lua=$(per_unit_difference "$(instructions "$LUA $lua $SMALL")" \
    "$(instructions "$LUA $lua $BIG")" "$SMALL" "$BIG" 1 "%.0f")
  ratio=$(awk -v a="$ir_lx" -v b="$ir_lua" 'BEGIN { printf "%.1f", a / b }')
  ratios+=("$ratio")
  printf "%-10s %14s %14s %8s\n" "$name" "$ir_lx" "$ir_lua" "$ratio"
done
median=$(printf '%s\n' "${ratios[@]}" | sort -g |
  awk '{ v[NR] = $1 } END { if (NR % 2) print v[(NR + 1) / 2]; else print (v[NR / 2] + v[NR / 2 + 1]) / 2 }')
worst=$(printf '%s\n' "${ratios[@]}" | sort -g | tail -1)
echo "median ratio $median, worst $worst"
