#!/bin/sh
# Every public header compiles alone, and twice, as C99 and as C++20 without a warning; programs pass
# arrays of planes without a cast or a warning in every C since C99 and in C++20 (planes.c).
# usage: headers.sh <include directory> <C compiler> <C++ compiler>
set -eu
include=$1 cc=$2 cxx=$3
here=$(dirname "$0")
status=0

# compile <what> <source> <compiler> <language> <standard>: a compiler that does not know the standard
# or is not there is left out.
compile() {
  command -v "$3" >/dev/null && echo | "$3" -x "$4" -std="$5" -fsyntax-only - 2>/dev/null || return 0
  "$3" -x "$4" -std="$5" -Wall -Wextra -Wpedantic -Wcast-qual -Werror -fsyntax-only -I "$include" - \
    <"$2" || { echo "$1 fails with $3 as $5"; status=1; }
}

source=$(mktemp)
trap 'rm -f "$source"' EXIT
for header in "$include"/vek/*.h; do
  name=vek/${header##*/}
  printf '#include "%s"\n#include "%s"\n' "$name" "$name" >"$source"
  for c in "$cc" gcc clang; do compile "$name" "$source" "$c" c c99; done
  for c in "$cxx" g++ clang++; do compile "$name" "$source" "$c" c++ c++20; done
done
for standard in c99 c11 c17 c2x; do
  for c in "$cc" gcc clang; do compile planes.c "$here/planes.c" "$c" c $standard; done
done
for c in "$cxx" g++ clang++; do compile planes.c "$here/planes.c" "$c" c++ c++20; done
exit "$status"
