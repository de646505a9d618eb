#!/bin/sh
# Runs the programs that take raw frames on a frame of one grey, and looks whether it stays one.
# usage: run_raw.sh <raw_to_ppm> <develop_raw> <raw_stream>
set -eu
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Bytes of 128 are packed samples of 512 and 514; 64 x 32 of them are 2560 bytes.
head -c 2560 /dev/zero | tr '\0' '\200' >"$work/grey.raw"

# grey <file> <bytes before the pixels> <bytes of pixels>: all of these within 3 codes, about 182.
grey() {
  tail -c +$(($2 + 1)) "$1" | head -c "$3" | od -An -v -tu1 -w1 >"$work/codes"
  [ "$(wc -l <"$work/codes")" -eq "$3" ] || { echo "$1 has not $3 bytes"; exit 1; }
  sort -n "$work/codes" | sed -n '1p;$p' | paste -s -d ' ' >"$work/range"
  read -r low high <"$work/range"
  [ "$low" -ge "$4" ] && [ "$high" -le $(($4 + 5)) ] || { echo "$1: $low to $high"; exit 1; }
}

"$1" "$work/grey.raw" 64 32 64 1 1 >"$work/c.ppm"
grey "$work/c.ppm" 13 6144 178
"$2" "$work/grey.raw" 64 32 64 >"$work/cc.ppm"
grey "$work/cc.ppm" 13 6144 178
cat "$work/grey.raw" "$work/grey.raw" | "$3" 64 32 64 >"$work/two.yuv"
[ "$(wc -c <"$work/two.yuv")" -eq 6144 ] || { echo "the stream has not two frames"; exit 1; }
grey "$work/two.yuv" 0 2048 169
! "$2" "$work/grey.raw" 64 33 64 >"$work/none" 2>"$work/message"
grep -q 'data has 2560 bytes' "$work/message" || { cat "$work/message"; exit 1; }
