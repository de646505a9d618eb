#!/bin/sh
# The C++ interface costs nothing: what a wrapped call compiles to has the one call of the C function
# that cost.cc names, and none besides. What is moved out of the way for errors does not count.
# usage: cost.sh <C++ compiler> <objdump> <include directory>
set -eu
export LC_ALL=C
cxx=$1 objdump=$2 include=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

"$cxx" -std=c++17 -O2 -fno-stack-protector -I "$include" -c -o "$work/cost.o" "$(dirname "$0")/cost.cc"
# A line "function target" for each call or jump to somewhere else; parts for errors have sections or
# names of their own, and Clang's functions for errors are marked as such in their names.
"$objdump" -dr --no-show-raw-insn "$work/cost.o" | awk '
  /^Disassembly of section/ { unlikely = /unlikely/ }
  /^[0-9a-f]+ <.*>:$/ { name = $2; gsub(/[<>:]/, "", name) }
  name ~ /^calls_/ && name !~ /cold/ && !unlikely &&
      $2 ~ /^R_.*_(PLT32|PC32|CALL26|JUMP26|CALL|JUMP24|PLT)$/ {
    target = $3
    sub(/[-+]0x.*/, "", target)
    # Data and the parts for errors.
    if (target !~ /^(\.|a$|b$|y$|cb$|cr$|result$|pixels$)/) print name, target
  }' >"$work/calls"

status=0
for function in $(sed -n 's/.* \**\(calls_[A-Za-z0-9_]*\)(.*/\1/p' "$(dirname "$0")/cost.cc"); do
  wanted=${function#calls_}
  wanted=${wanted%_orThrows}
  wanted=${wanted%_ofAnySize}
  found=$(sed -n "s/^$function //p" "$work/calls")
  case $function in
    *_orThrows) found=$(echo "$found" | grep -v 'OnError.*refuse\|Call.*refused' || true) ;;
  esac
  if [ "$found" != "$wanted" ]; then
    echo "$function calls:" $found
    status=1
  fi
done
[ "$status" -eq 0 ] && echo "$(wc -l <"$work/calls") calls, each the one that is wanted"
exit "$status"
