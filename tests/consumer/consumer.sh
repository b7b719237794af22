#!/usr/bin/env bash
# consumer.sh BUILD WORK: installs BUILD, moves the tree elsewhere below WORK, and uses it there as strangers
# do: the command line, and programs found by pkg-config and by CMake.
set -euo pipefail
build=$1 work=$2 tree="$2/moved here"
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
warnings=(-Wall -Wextra -Wpedantic -Werror)
unset VX_FILTER_PATH LD_LIBRARY_PATH PKG_CONFIG_PATH DESTDIR

fail() { printf '%s\n' "$*" >&2; exit 1; }
expect() { [ "$2" = "$3" ] || fail "$1: '$2' expected, not '$3'"; }  # WHAT EXPECTED ACTUAL

# An icon of several pages becomes a bitmap, and that an icon again.
run_programs() {  # ROUTE C_PROGRAM CPP_PROGRAM
  expect "$1, C" 48x48 "$("$2" "$work/samples/icon-sizes.ico" "$work/out.bmp")"
  expect "$1, C++" "2 pages" "$("$3" "$work/out.bmp" "$work/out.ico")"
  expect "$1, vxbmp" $'48x48\n48x48' "$("$tree/bin/vxbmp" info "$work/out.ico" | grep -o 48x48)"
}

rm -rf "$work"
mkdir -p "$work"
"$build/bin/vxsamples" "$work/samples" >"$work/samples.log"
cmake --install "$build" --prefix "$work/installed" >"$work/install.log"
mv "$work/installed" "$tree"
if grep -rlF "$build" "$tree"; then fail "these name a folder of the build"; fi

PKG_CONFIG_PATH=$(dirname "$(find "$tree" -name vxkrn.pc)")
export PKG_CONFIG_PATH
ask() { eval "answer=($(pkg-config "$@" vxkrn))"; }  # it quotes spaces for the shell
ask --cflags --libs
flags=("${answer[@]}")
expect version "vxbmp $(pkg-config --modversion vxkrn)" "$("$tree/bin/vxbmp" --version)"
ask --variable=filterdir
[ -f "${answer[0]}/vxfbmp.so.18" ] || fail "the filter is not in filterdir"
"$CC" -std=c11 "${warnings[@]}" "$here/consumer.c" "${flags[@]}" -o "$work/c_program"
"$CXX" -std=c++20 "${warnings[@]}" "$here/consumer.cpp" "${flags[@]}" -o "$work/cpp_program"
ask --variable=contractdir
"$CXX" -std=c++20 "${warnings[@]}" "-I${answer[0]}" -shared -fPIC "$here/filter.cpp" "${flags[@]}" -Wl,-z,defs \
  -o "$work/filter.so"
ask --variable=libdir
LD_LIBRARY_PATH=${answer[0]} run_programs pkg-config "$work/c_program" "$work/cpp_program"

cmake -G Ninja -S "$here" -B "$work/build" -DCMAKE_PREFIX_PATH="$tree" >"$work/cmake.log" 2>&1 &&
  cmake --build "$work/build" >>"$work/cmake.log" 2>&1 || { cat "$work/cmake.log" >&2; exit 1; }
run_programs find_package "$work/build/c_program" "$work/build/cpp_program"
