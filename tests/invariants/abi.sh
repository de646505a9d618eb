#!/bin/sh
# The binary interface is that of its SOVERSION: exported symbols (and the sizes of the tables) and the
# layout of the public records are those in abi/<SOVERSION>/.
# usage: abi.sh <nm> <libvek.so> <directory of the SOVERSION> <pointer size> <program>...
#        the program, behind its emulator if it needs one, prints the records; with --update before
#        it the lists are written instead
set -eu
export LC_ALL=C
nm=$1 library=$2 directory=$3 pointer=$4 bits=$(($4 * 8))
shift 4
update=
if [ "$1" = --update ]; then
  update=yes
  shift
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

"$@" >"$work/records-$bits"
"$nm" -D -S --defined-only "$library" | sed 's/@.*//' | awk -v pointer="$pointer" '
  $(NF - 1) == "A" { next }  # the version itself
  NF == 4 && $3 ~ /^[RD]$/ {
    sub(/^0*/, "", $2)
    print $4, $4 ~ /_DK$/ && $2 == pointer ? "pointer" : "table of 0x" $2
    next
  }
  { print $NF }' | sort >"$work/symbols"

if [ -n "$update" ]; then
  mkdir -p "$directory"
  cp "$work/symbols" "$work/records-$bits" "$directory"
  exit
fi
status=0
for list in symbols "records-$bits"; do
  diff -u "$directory/$list" "$work/$list" || status=1
done
[ "$status" -eq 0 ] || echo "the binary interface changed: it needs a new SOVERSION and new lists"
exit "$status"
