#!/bin/sh
# A C program builds and runs on musl, another C library than the one that the library was built beside,
# and reaches the processor's highest level there.
# usage: musl.sh <include directory> <libvek.a> <program.c> <highest_level>
set -eu
include=$1 library=$2 source=$3 highest_level=$4
command -v musl-gcc >/dev/null || { echo "musl-gcc is not installed (musl-tools)"; exit 77; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
musl-gcc -std=c99 -Wall -Wextra -Wpedantic -Werror -O1 -static -I "$include" -o "$work/program" \
  "$source" "$library"
expected=$("$highest_level" 2>/dev/null)
"$work/program" | tee "$work/output"
grep -qx "highest: $expected" "$work/output" || { echo "expected $expected"; exit 1; }
