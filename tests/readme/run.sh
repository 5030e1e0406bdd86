#!/usr/bin/env bash
# Compiles and runs every C++ block of README.md that is marked as compiled: a line
# "<!-- compiled -->" just before a ```cpp block that is a whole program. A block that no
# longer compiles, or a program that exits non-zero, fails the test.
#   tests/readme/run.sh SOURCE_DIR LIBRARY_DIR
set -euo pipefail
source_dir=$1
library_dir=$2
work=$(mktemp -d "${TMPDIR:-/tmp}/lxbasic-readme.XXXXXX")
trap 'rm -rf "$work"' EXIT

awk -v dir="$work" '
  /^<!-- compiled -->/ { marked = 1; next }
  marked && /^```cpp/ { n++; file = sprintf("%s/snippet%02d.cpp", dir, n); inside = 1; marked = 0; next }
  inside && /^```/ { inside = 0; close(file); next }
  inside { print > file; next }
  { marked = 0 }
' "$source_dir/README.md"

count=0
for snippet in "$work"/snippet*.cpp; do
  [ -e "$snippet" ] || break
  count=$((count + 1))
  program=${snippet%.cpp}
  c++ -std=c++20 -Wall -Wextra -Werror -I "$source_dir/include" "$snippet" -o "$program" \
    -L "$library_dir" -llxbasic -Wl,-rpath,"$library_dir" ||
    { echo "FAIL: README block $count does not compile:" >&2; cat -n "$snippet" >&2; exit 1; }
  "$program" >"$program.out" 2>&1 ||
    { echo "FAIL: README block $count exits with $?:" >&2; cat "$program.out" >&2; exit 1; }
  echo "ok: README block $count"
done
[ "$count" -gt 0 ] || { echo "FAIL: no compiled block in README.md" >&2; exit 1; }
