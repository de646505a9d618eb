#!/bin/sh
# C99 programs find and use the library: the README's example through pkg-config, the consumer project
# through find_package and with the library as a subdirectory.
# usage: package.sh <cmake> <generator> <C compiler> <C++ compiler> <source directory> <build
#        directory> <library directory under the prefix> [subdirectory]
set -eu
cmake=$1 generator=$2 cc=$3 cxx=$4 source=$5 build=$6 libdir=$7
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# consumer <name> <CMake argument>...: builds the tiny project and runs its programs.
consumer() {
  name=$1
  shift
  "$cmake" -S "$source/tests/invariants/consumer" -B "$work/$name" -G "$generator" \
    -DCMAKE_C_COMPILER="$cc" -DCMAKE_CXX_COMPILER="$cxx" "$@"
  "$cmake" --build "$work/$name"
  "$work/$name/with_shared"
  "$work/$name/with_static"
}

if [ "${8-}" = subdirectory ]; then
  # The portable level alone and unoptimised, to be quick.
  consumer subdirectory -DVEK_SOURCE="$source" -DVEK_BUILD_LEVELS=portable -DCMAKE_BUILD_TYPE=Debug
  exit
fi

prefix=$work/prefix
"$cmake" --install "$build" --prefix "$prefix"
consumer installed -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_BUILD_TYPE=Release

command -v pkg-config >/dev/null || { echo "pkg-config is not installed"; exit 77; }
export PKG_CONFIG_PATH="$prefix/$libdir/pkgconfig"
# shellcheck disable=SC2016  # Markdown's own quotes
sed -n '/^```c$/,/^```$/p' "$source/README.md" | sed '/^```/d' >"$work/example.c"
# shellcheck disable=SC2046  # flags are words
"$cc" -std=c99 -Wall -Wextra -Wpedantic -Werror $(pkg-config --cflags vek) -o "$work/example" \
  "$work/example.c" $(pkg-config --libs vek)
LD_LIBRARY_PATH="$prefix/$libdir" "$work/example"
