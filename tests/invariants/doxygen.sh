#!/bin/sh
# Doxygen finds every function, record, field, enumerator and table of include/vek documented, without a
# warning, and its output has a description for every exported name.
# usage: doxygen.sh <source directory>
set -eu
export LC_ALL=C
command -v doxygen >/dev/null || exit 77
cd "$1"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

{ cat docs/Doxyfile; printf 'OUTPUT_DIRECTORY=%s\nGENERATE_HTML=NO\nGENERATE_XML=YES\n' "$work"; } |
  doxygen -

# A member's description follows its name, brief or detailed, as paragraphs.
awk '
  /<memberdef / { name = ""; described = 0 }
  /<name>/ && name == "" { name = $0; gsub(/.*<name>|<\/name>.*/, "", name) }
  /<(brief|detailed)description>/ { inside = 1 }
  inside && /<para>/ { described = 1 }
  /<\/(brief|detailed)description>/ { inside = 0 }
  /<\/memberdef>/ && described { print name }
' "$work"/xml/*.xml | sort -u >"$work/described"
cut -d' ' -f1 tests/invariants/abi/0/symbols | sort -u >"$work/exported"
if [ -n "$(comm -23 "$work/exported" "$work/described")" ]; then
  echo "exported, but without a description:"
  comm -23 "$work/exported" "$work/described" | sed 's/^/    /'
  exit 1
fi
echo "$(wc -l <"$work/exported") names are described"
