#!/bin/sh
# Every public header compiles alone, and twice, as C99 and as C++20 without a warning.
# usage: headers.sh <include directory> <C compiler> <C++ compiler>
set -eu
include=$1 cc=$2 cxx=$3
status=0

# compile <compiler> <language> <standard>
compile() {
  command -v "$1" >/dev/null || return 0
  for header in "$include"/vek/*.h; do
    name=vek/${header##*/}
    printf '#include "%s"\n#include "%s"\n' "$name" "$name" |
      "$1" -x "$2" -std="$3" -Wall -Wextra -Wpedantic -Werror -fsyntax-only -I "$include" - ||
      { echo "$name fails with $1 as $3"; status=1; }
  done
}

for c in "$cc" gcc clang; do compile "$c" c c99; done
for c in "$cxx" g++ clang++; do compile "$c" c++ c++20; done
exit "$status"
