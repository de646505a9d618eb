#!/bin/sh
# The house's rules of names and of where things stand, as far as a script sees them (CONTRIBUTING.md).
# usage: names.sh <source directory>
set -eu
export LC_ALL=C
cd "$1"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# rule <what is wrong>: reads lines "file:line:text"; fails if there are any.
rule() {
  cat >"$work/found"
  [ -s "$work/found" ] || return 0
  echo "$1:"
  sed 's/^/    /' "$work/found"
  : >"$work/failed"
}

find core camera image apps tests bench fuzz \( -name '*.h' -o -name '*.cc' -o -name '*.c' \) |
  sort >"$work/sources"
grep -E '^(core|camera|image)/' "$work/sources" >"$work/library"
grep '\.h$' "$work/library" >"$work/headers"
in_sources() { xargs grep -nE "$1" <"$work/sources" || true; }
in_library() { xargs grep -nE "$1" <"$work/library" || true; }
in_headers() { xargs grep -nE "$1" <"$work/headers" || true; }

# Every identifier of the library, one a line as file:line:identifier, without comments and strings.
xargs awk '
  FNR == 1 { comment = 0 }
  {
    line = $0
    if (comment && !sub(/^.*\*\//, "", line)) next
    comment = 0
    gsub(/"([^"\\]|\\.)*"/, "", line)
    gsub(/\/\*[^*]*\*\//, "", line)
    if (sub(/\/\*.*/, "", line)) comment = 1
    sub(/\/\/.*/, "", line)
    while (match(line, /[A-Za-z_][A-Za-z0-9_]*/)) {
      print FILENAME ":" FNR ":" substr(line, RSTART, RLENGTH)
      line = substr(line, RSTART + RLENGTH)
    }
  }' <"$work/library" >"$work/identifiers"
# What the public headers declare is the contract.
grep -ohE '\b_?[vV][eE][kK][A-Za-z0-9_]*' include/vek/*.h | sort -u >"$work/public"
internal() {
  awk -F: -v pattern="$1" -v list="$work/public" '
    BEGIN { while ((getline name < list) > 0) exported[name] = 1 }
    $3 ~ pattern && !($3 in exported)' "$work/identifiers"
}

internal '^(veki|own[A-Z_]|owni|line[A-Z])' | rule "internal names with a prefix"
internal '^_[A-Za-z]' | grep -vE ':(_mm[0-9]*_|__m[0-9]+i?|_MM_)' |
  rule "reserved names"
in_sources 'VEK_HAVE_HIGHWAY' | rule "levels above portable exist only with Highway"
# A function, or a template made for plain lanes or steps.
for file in $(grep '_portable\.cc$' "$work/library"); do
  grep -qE '^ *[a-zA-Z].*\) (const )?\{$|Of<[A-Za-z]+>\(|\bPlain[A-Za-z]+>' "$file" || echo "$file:1: none"
done | rule "portable files without a kernel"
in_library '\bScalableTag<|\busing V(8|16|32|64)[usf] *=|\bconstexpr .*\b(u8|s8|u16|s16|u32|s32|u64|f32|f64) *(=|;|\{)' |
  grep -v '^core/kernel/lanes\.h:' | rule "lanes declared outside core/kernel/lanes.h"
in_headers '^(inline )?(constexpr|const) [a-z0-9_:]+ (half|lanes|words|bytes|most)\b' |
  rule "constants with a name that others use for their own"

[ ! -e "$work/failed" ]
