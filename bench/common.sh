# Shared by the measuring scripts of bench/: the Release build of the workload driver and the
# two ways of costing a command. Source it from the repository root after `set -euo pipefail`.
#   BUILD=dir JOBS=n   override the build tree and the build jobs

BUILD=${BUILD:-$PWD/build-release}
JOBS=${JOBS:-2}
LXBENCH=$BUILD/bench/lxbench

# Builds lxbench in the Release tree (quietly; the configure step is skipped once done).
build_lxbench() {
  echo "Building the Release tree in $BUILD ..." >&2
  cmake -S . -B "$BUILD" -DCMAKE_BUILD_TYPE=Release -DLX_BUILD_TESTS=OFF \
    -DCMAKE_CXX_COMPILER_LAUNCHER="$(command -v ccache || true)" >/dev/null
  cmake --build "$BUILD" -j "$JOBS" --target lxbench >/dev/null
}

# Instructions of one run of COMMAND (a string split at blanks), all threads together.
instructions() {
  local out
  out=$(valgrind --tool=callgrind --callgrind-out-file=/dev/null $1 2>&1 >/dev/null) || {
    echo "failed: $1" >&2
    echo "$out" >&2
    exit 1
  }
  echo "$out" | sed -n 's/.*Collected : *\([0-9]*\).*/\1/p' | tail -1
}

# Seconds of the fastest of three runs of COMMAND.
seconds() {
  local best="" i start end
  for i in 1 2 3; do
    start=$EPOCHREALTIME
    $1 >/dev/null || { echo "failed: $1" >&2; exit 1; }
    end=$EPOCHREALTIME
    best=$(awk -v s="$start" -v e="$end" -v b="$best" \
      'BEGIN { d = e - s; if (b == "" || d < b) print d; else print b }')
  done
  echo "$best"
}

# (cost at the big size - cost at the small size) / (units big - units small)
per_unit_difference() {  # COST_SMALL COST_BIG UNITS_SMALL UNITS_BIG SCALE FORMAT
  awk -v a="$1" -v b="$2" -v u="$3" -v v="$4" -v s="$5" -v f="$6" \
    'BEGIN { printf f, (b - a) / (v - u) * s }'
}
