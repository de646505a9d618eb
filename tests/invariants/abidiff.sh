#!/bin/sh
# The types of all arguments, results and tables are those of the SOVERSION, as abidiff compares them;
# additions are allowed. What is compared is a library of empty functions with debug information, made
# from the headers: abi.sh looks at the real one.
# usage: abidiff.sh [--update] <C compiler> <source directory> <directory of the SOVERSION>
set -eu
export LC_ALL=C
update=
[ "$1" != --update ] || { update=yes; shift; }
cc=$1 source=$2 directory=$3
command -v abidiff >/dev/null || { echo "abidiff is not installed"; exit 77; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cd "$source/include/vek"
printf '#include "vek/%s"\n' *.h >"$work/stub.c"
"$cc" -E -P -I "$source/include" "$work/stub.c" | tr '\n' ' ' | tr ';' '\n' |
  sed -n 's/.*__attribute__((visibility("default"))) *//p' |
  sed 's/^extern \(.*\)/\1 = {0};/; t; s/$/ { __builtin_trap(); }/' >"$work/definitions"
cat "$work/definitions" >>"$work/stub.c"
cd "$work"
"$cc" -g -O0 -w -fPIC -shared -I "$source/include" stub.c -o libvek.so
if [ -n "$update" ]; then
  abidw --no-comp-dir-path --no-corpus-path --no-show-locs --type-id-style hash libvek.so |
    sed 's/^ *//' >"$directory/types.abi"
  exit
fi
abidiff --no-added-syms --no-show-locs "$directory/types.abi" libvek.so ||
  { echo "types of the binary interface changed: it needs a new SOVERSION"; exit 1; }
