#!/bin/sh
# Filters a small picture, one white pixel in the middle of 5 x 5, whose results are known.
# usage: run_filter.sh <filter_image>
set -eu
filter=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

black() { head -c 12 /dev/zero; }
{ printf 'P5\n# a comment\n5 5\n255\n'; black; printf '\377'; black; } >"$work/dot.pgm"
# expect <how> <the sum of all samples>
expect() {
  "$filter" "$1" "$work/dot.pgm" "$work/out.pgm"
  sum=$(tail -c 25 "$work/out.pgm" | od -An -v -tu1 | awk '{ for (i = 1; i <= NF; ++i) n += $i } END { print n }')
  [ "$sum" -eq "$2" ] || { echo "$1: the samples sum to $sum, not $2"; exit 1; }
}
expect box 250      # 255 / 25 everywhere
expect median 0
expect sharpen 255  # twice the pixel, limited
expect edges 2295   # 255 in 3 x 3 pixels

# Errors say what is wrong.
printf 'P5 0 5 255\n' >"$work/none.pgm"
! "$filter" box "$work/none.pgm" "$work/out.pgm" 2>"$work/message"
grep -q 'size is 0 x 5' "$work/message" || { cat "$work/message"; exit 1; }
