#!/bin/sh
# Objects of a higher level define their tables only, consist of its vectors, and point to kernels of
# their own or of the portable level.
# Of unoptimised objects the last two are not true of what the compiler leaves in; only what they define is
# looked at.
# usage: level_objects.sh <readelf> <nm> <objdump> <levels.txt> <file with lines: level object>
#        [unoptimised]
set -eu
export LC_ALL=C
readelf=$1 nm=$2 objdump=$3 levels=$4 objects=$5 unoptimised=${6-}
status=0

# none <what is wrong> <lines>: fails with the lines unless there are none.
none() {
  [ -n "$2" ] || return 0
  printf '%s:\n%s\n' "$1" "$2"
  status=1
}

while read -r level object; do
  # The linker may hand a weak function of a higher level to code that runs on every processor. Without
  # optimisation those of Highway are there, which have their instructions' name in theirs (N_AVX2) or
  # make constants, and std::integral_constant's conversion to its number.
  symbols=$("$nm" -g --defined-only "$object")
  if [ -n "$unoptimised" ]; then
    symbols=$(printf '%s\n' "$symbols" | grep -vE ' W .*(3hwy|17integral_constant)| [Vu] ' || true)
  fi
  [ -n "$symbols" ] || none "no table of level $level" "$object"
  none "level $level defines more than its tables in $object" \
    "$(printf '%s\n' "$symbols" | awk -v level="$level" '
      $2 !~ /^[RD]$/ || index($3, "_ZN3vek" length(level) level) != 1')"

  [ -z "$unoptimised" ] || continue

  # The vectors of a level are what it is for.
  vectors=$(awk -v level="$level" '$1 == level { print $3 }' "$levels")
  [ "$vectors" != - ] || none "levels.cmake does not say what vectors look like" "$level"
  count=$("$objdump" -d --no-show-raw-insn "$object" | grep -cE "$vectors" || true)
  printf '%6d vector instructions: %s %s\n' "$count" "$level" "${object##*.dir/}"
  [ "$count" -ge 8 ] || none "hardly a vector instruction" "$object"

  # What the tables point to: functions of the object itself, or portable ones.
  none "a table of level $level points elsewhere in $object" \
    "$("$readelf" -rW "$object" | awk '
      /^Relocation section/ { data = $3 ~ /^.\.rela?\.data/ }
      data && $5 != "" && $5 !~ /^(\.text|\.rodata|_ZN3vek8portable|_ZN3vek([0-9]+[a-z0-9]+)?12_GLOBAL__N_1)/ &&
        $3 ~ /^R_/')"
done <"$objects"
exit "$status"
