#!/bin/sh
# What gst-inspect-1.0 and gst-launch-1.0 make of the plugin: both elements are there, and the pipelines
# of the documentation run, for a few frames and without a display.
# usage: launch.sh <directory of the tools> <gstreamer.md>
set -eu
tools=$1 document=$2
inspect=$tools/gst-inspect-1.0
[ -x "$inspect" ] || { echo "$inspect is not installed"; exit 77; }
"$inspect" rgb2bayer >/dev/null || { echo "rgb2bayer is not installed"; exit 77; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

"$inspect" vek >"$work/plugin"
[ "$(grep -c '^  vek' "$work/plugin")" = 2 ] || { cat "$work/plugin"; exit 1; }
for element in vekisp vekconvert; do
  "$inspect" "$element" >"$work/element"
  grep -q '^  rotation ' "$work/element" || { echo "$element has no rotation"; exit 1; }
done

# Three frames of RAW10: 640 x 480 samples in 384000 bytes each.
head -c 1152000 /dev/zero >"$work/frames.raw"
cd "$work"
sed -n '/^```sh$/,/^```$/p' "$document" | sed '/^```/d' | awk '
  { continues = sub(/\\$/, ""); line = line $0 }
  !continues { if (line ~ /^gst-launch/) print line; line = "" }' >pipelines
[ "$(wc -l <pipelines)" -ge 4 ] || { echo "the documentation has no pipelines"; exit 1; }
while read -r line; do
  line=$(printf '%s\n' "$line" | sed 's/videotestsrc/videotestsrc num-buffers=3/
    s/v4l2src[^!]*/videotestsrc num-buffers=3 /
    s/videoconvert ! autovideosink/fakesink/; s/autovideosink/fakesink/')
  echo "$line"
  (PATH=$tools:$PATH timeout 20 sh -c "$line") >log 2>&1 || { cat log; exit 1; }
  ! grep -E 'WARNING|CRITICAL' log || exit 1
done <pipelines
