#!/bin/sh
# A program on the shared library writes the same pictures at every level of the processor.
# usage: levels.sh <vekcam> <levels.txt>
set -eu
vekcam=$1
masks=$(awk '!/^#/ && $2 != "-" { print $2 }' "$2")
[ -n "$masks" ] || { echo "no level can be switched off from outside"; exit 77; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

simulate() {
  "$vekcam" simulate --frames 12 --size 320x240 --preview 160x120 --out "$work/$1" >/dev/null
}

simulate all
for mask in $masks; do
  GLIBC_TUNABLES=glibc.cpu.hwcaps=$mask simulate "without$mask"
  # The report shows times.
  diff -r --exclude=report.html "$work/all" "$work/without$mask"
done
