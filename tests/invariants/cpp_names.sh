#!/bin/sh
# Every exported function has a C++ form: its name stands in the code, not only the comments, of the
# headers of the C++ interface.
# usage: cpp_names.sh <include directory> <exported function>...
set -eu
export LC_ALL=C
include=$1
shift
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

find "$include/vek" -name '*.hpp' -exec sed -e 's|//.*||' -e '/^ *\/\*\*/,/\*\//d' {} + |
  grep -oE '[A-Za-z0-9_]+' | sort -u >"$work/used"
printf '%s\n' "$@" | sort -u >"$work/exported"
if [ -n "$(comm -23 "$work/exported" "$work/used")" ]; then
  echo "exported, but without a C++ form:"
  comm -23 "$work/exported" "$work/used" | sed 's/^/    /'
  exit 1
fi
echo "$# functions have a C++ form"
