#!/bin/sh
# Every public header compiles alone, and twice, without a warning: those of the C interface as C99 and
# as C++20, those of the C++ interface as C++17, and all of these together as C++17, 20 and 23, with
# exceptions and without. Programs pass arrays of planes without a cast or a warning in every C since C99
# and in C++20 (planes.c).
# usage: headers.sh <include directory> <C compiler> <C++ compiler>
set -eu
include=$1 cc=$2 cxx=$3
here=$(dirname "$0")
status=0

# compile <what> <source> <compiler> <language> <standard> [flag]...: a compiler that does not know the
# standard or is not there is left out.
compile() {
  what=$1 input=$2 compiler=$3 language=$4 standard=$5
  shift 5
  command -v "$compiler" >/dev/null &&
    echo | "$compiler" -x "$language" -std="$standard" -fsyntax-only - 2>/dev/null || return 0
  "$compiler" -x "$language" -std="$standard" -Wall -Wextra -Wpedantic -Wcast-qual -Werror "$@" \
    -fsyntax-only -I "$include" - <"$input" ||
    { echo "$what fails with $compiler as $standard $*"; status=1; }
}

source=$(mktemp)
trap 'rm -f "$source"' EXIT
for header in "$include"/vek/*.h; do
  name=vek/${header##*/}
  printf '#include "%s"\n#include "%s"\n' "$name" "$name" >"$source"
  for c in "$cc" gcc clang; do compile "$name" "$source" "$c" c c99; done
  for c in "$cxx" g++ clang++; do compile "$name" "$source" "$c" c++ c++20; done
done
for header in "$include"/vek/*.hpp "$include"/vek/*/*.hpp; do
  name=${header#"$include"/}
  printf '#include "%s"\n#include "%s"\n' "$name" "$name" >"$source"
  compile "$name" "$source" "$cxx" c++ c++17 -Wconversion -Wshadow
done
(cd "$include" && printf '#include "%s"\n' vek/*.hpp) >"$source"
for c in g++ clang++; do
  for standard in c++17 c++20 c++2b; do
    compile "the C++ interface" "$source" "$c" c++ $standard -Wconversion -Wshadow
  done
  compile "the C++ interface" "$source" "$c" c++ c++17 -fno-exceptions -fno-rtti
done
for standard in c99 c11 c17 c2x; do
  for c in "$cc" gcc clang; do compile planes.c "$here/planes.c" "$c" c $standard; done
done
for c in "$cxx" g++ clang++; do compile planes.c "$here/planes.c" "$c" c++ c++20; done
exit "$status"
