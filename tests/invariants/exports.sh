#!/bin/sh
# What libvek exports is what include/ declares with VEK_API, both ways and of the same kind; the
# static library defines no other name than in namespace vek or with the prefix vek. (That every
# exported function is tested and benchmarked is what `campaign complete` sees to.)
# usage: exports.sh <C compiler> <nm> <source directory> <libvek.so> <libvek.a>
set -eu
export LC_ALL=C
cc=$1 nm=$2 source=$3 shared=$4 static=$5
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
status=0

# none <what is wrong> <file>: fails with the file's lines unless it is empty.
none() {
  [ -s "$2" ] || return 0
  echo "$1:"
  sed 's/^/    /' "$2"
  status=1
}

# Preprocessed declarations, one a line; the name stands before the first bracket.
for header in "$source"/include/vek/*.h; do
  "$cc" -E -P -I "$source/include" "$header"
done | tr '\n' ' ' | tr ';' '\n' | sed -n 's/.*__attribute__((visibility("default"))) *//p' |
  sed 's/^\([^[(]*[ *]\)\{0,1\}\([A-Za-z0-9_]*\) *\(.\{0,1\}\).*/\2 \3/' |
  sed 's/ ($/ function/; t; s/ .*$/ table/' | sort -u >"$work/declared"
if ! grep -q '^vekiGetLibVersion function$' "$work/declared"; then
  echo "the declarations could not be read from the headers"
  exit 1
fi

# The symbol of a version is its own; all others have one.
"$nm" -D --defined-only "$shared" | awk '$2 != "A" { print $NF }' >"$work/versioned"
grep -vE '@@VEK_[0-9.]+$' "$work/versioned" >"$work/unversioned" || true
none "exported without a version" "$work/unversioned"

"$nm" -D --defined-only "$shared" | sed 's/@.*//' | awk '
  $2 == "A" { next }
  $2 == "T" { print $3, "function"; next }
  $2 ~ /^[RD]$/ { print $3, "table"; next }
  { print $NF, "of unexpected kind " $2 }' | sort -u >"$work/exported"
comm -23 "$work/declared" "$work/exported" >"$work/missing"
none "declared in include/, not exported" "$work/missing"
comm -13 "$work/declared" "$work/exported" >"$work/undeclared"
none "exported, not declared in include/" "$work/undeclared"

sed 's/ .*//' "$work/declared" >"$work/names"
"$nm" -g --defined-only "$static" | awk 'NF == 3 { print $3 }' | sort -u |
  comm -13 "$work/names" - | grep -vE '^(_ZNK?3)?vek' >"$work/outside" || true
none "foreign global names in the static library" "$work/outside"

[ "$status" -eq 0 ] && echo "$(wc -l <"$work/names") names agree"
exit "$status"
