#!/bin/sh
# The families that calculate in doubles round after every multiplication: none of their objects, of
# whatever level, has an instruction that multiplies and adds with one rounding.
# usage: roundings.sh <objdump> <file with lines: level object>...
set -eu
export LC_ALL=C
objdump=$1
shift
fused='\<(vfn?m(add|sub)|fn?madd|fn?msub|fml[as]|vfn?m[as]|wfn?m[as]db|m[as]dbr?)'
status=0 count=0
for list; do
  while read -r level object; do
    case $object in
      */image/transform/* | */image/warp/* | */image/stat/*moments*) ;;
      *) continue ;;
    esac
    count=$((count + 1))
    found=$("$objdump" -d --no-show-raw-insn "$object" | grep -cE "$fused" || true)
    [ "$found" -eq 0 ] || {
      printf '%s fused instructions: %s %s\n' "$found" "$level" "${object##*.dir/}"
      status=1
    }
  done <"$list"
done
[ "$count" -gt 0 ] || { echo 'no object was looked at'; status=1; }
exit "$status"
