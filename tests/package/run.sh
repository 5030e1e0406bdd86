#!/usr/bin/env bash
# Installs the built engine into a temporary prefix and builds a small host against it three
# ways: find_package(LxBasic CONFIG), pkg-config, and add_subdirectory of the source tree.
#   tests/package/run.sh SOURCE_DIR BUILD_DIR
set -euo pipefail
source_dir=$1
build_dir=$2
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d "${TMPDIR:-/tmp}/lxbasic-package.XXXXXX")
trap 'rm -rf "$work"' EXIT
expected="LxBasic 1.6: TOTAL 19, check ok"
launcher=()
command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)

fail() {
  echo "FAIL: $*" >&2
  exit 1
}

expect_output() {  # expect_output WHAT PROGRAM
  local got
  got=$("$2") || fail "$1: the consumer failed"
  [ "$got" = "$expected" ] || fail "$1: printed '$got', expected '$expected'"
  echo "ok: $1"
}

prefix=$work/prefix
cmake --install "$build_dir" --prefix "$prefix" >"$work/install.log" || fail "cmake --install"
for f in include/lxbasic/script.h include/lxbasic/export.h include/lxbasic/graphical_dialogs.h \
         bin/lxbasic lib/cmake/LxBasic/LxBasicConfig.cmake \
         lib/cmake/LxBasic/LxBasicConfigVersion.cmake lib/pkgconfig/lxbasic.pc; do
  [ -e "$prefix/$f" ] || [ -e "$prefix/${f/lib\//lib64/}" ] || fail "not installed: $f"
done
libdir=$(dirname "$(find "$prefix" -name 'liblxbasic.*' | head -1)")

got=$(echo 'DIM RESULT = "runs from " & ScriptEngine()' | env -u DISPLAY "$prefix/bin/lxbasic" -) ||
  fail "the installed runner does not start"
[ "$got" = "runs from LxBasic" ] || fail "the installed runner printed '$got'"
echo "ok: the installed runner finds its libraries"

# A headless host must not drag in a toolkit: the engine needs ICU and the C++ runtime only.
if [ -e "$libdir/liblxbasic.so" ]; then
  needed=$(readelf -d "$libdir/liblxbasic.so" | grep NEEDED || true)
  if grep -Eqi 'fltk|X11' <<<"$needed"; then fail "liblxbasic.so needs: $needed"; fi
  exported=$(nm -DC --defined-only "$libdir/liblxbasic.so" | grep -c ' lx::' || true)
  internal=$(nm -DC --defined-only "$libdir/liblxbasic.so" | grep -c 'lx::ScriptCore::' || true)
  [ "$internal" -eq 0 ] || fail "internal symbols are exported ($internal of lx::ScriptCore)"
  echo "ok: liblxbasic.so exports $exported lx:: symbols, none of the interpreter's internals"
fi

cmake -S "$here/consumer" -B "$work/config" -DCMAKE_PREFIX_PATH="$prefix" -DLX_CONSUME=config \
  -DCMAKE_BUILD_RPATH="$libdir" "${launcher[@]}" >"$work/config.log" 2>&1 ||
  { cat "$work/config.log" >&2; fail "find_package(LxBasic CONFIG)"; }
cmake --build "$work/config" >>"$work/config.log" 2>&1 ||
  { cat "$work/config.log" >&2; fail "building against the package"; }
expect_output "find_package(LxBasic CONFIG)" "$work/config/consumer"

export PKG_CONFIG_PATH=$libdir/pkgconfig
pkg-config --exists lxbasic || fail "pkg-config does not know lxbasic"
[ "$(pkg-config --modversion lxbasic)" = 1.6.0 ] || fail "pkg-config version"
# shellcheck disable=SC2046
c++ -std=c++20 "$here/consumer/consumer.cpp" -o "$work/pc-consumer" \
  $(pkg-config --cflags --libs lxbasic) -Wl,-rpath,"$libdir" || fail "building with pkg-config"
expect_output "pkg-config lxbasic" "$work/pc-consumer"

cmake -S "$here/consumer" -B "$work/subdir" -DLX_CONSUME=subdir -DLX_SOURCE="$source_dir" \
  -DLX_WITH_FLTK=OFF "${launcher[@]}" >"$work/subdir.log" 2>&1 ||
  { cat "$work/subdir.log" >&2; fail "add_subdirectory configure"; }
grep -q 'test_' "$work/subdir/lxbasic/tests/Makefile" 2>/dev/null &&
  fail "add_subdirectory builds the engine's tests"
cmake --build "$work/subdir" -j "${JOBS:-2}" --target consumer >>"$work/subdir.log" 2>&1 ||
  { tail -30 "$work/subdir.log" >&2; fail "add_subdirectory build"; }
expect_output "add_subdirectory" "$work/subdir/consumer"
