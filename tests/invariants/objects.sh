#!/bin/sh
# All objects of the library are optimised, and the compiler may use in the objects of each level exactly
# the processor features that the level is chosen for.
# usage: objects.sh <C++ compiler> <compile_commands.json> <level_list.h>
set -eu
export LC_ALL=C
cxx=$1 commands=$2 list=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
status=0

# macros <flag>...: what the compiler predefines with these flags.
macros() {
  "$cxx" "$@" -x c++ -dM -E - </dev/null | sed 's/^#define //' | sort
}

levels=$(sed -n 's/^#define VEK_FEATURES_\([a-z0-9]*\).*/\1/p' "$list")
macros >"$work/baseline"
for level in $levels; do
  # The optimisation and the flags for code, once for all objects that have the same.
  awk -v directory="CMakeFiles/vek_$level.dir/" '
    /"command": / && index($0, directory) {
      optimisation = "unoptimised"
      flags = ""
      for (i = 1; i <= NF; ++i) {
        if ($i ~ /^-O/) optimisation = $i
        if ($i ~ /^-m/) flags = flags " " $i
      }
      print optimisation flags
    }' "$commands" | sort -u >"$work/flags"
  [ -s "$work/flags" ] || { echo "no object of level $level in $commands"; status=1; }

  # The features by the names of the compiler's macros. SSE4.2 and AVX bring one macro more each.
  sed -n "s/^#define VEK_FEATURES_$level(X) *//p" "$list" | tr ' ' '\n' | sed '/^$/d
      s/X(\(.*\))/\1/
      s/^BMI1$/BMI/; s/^PCLMULQDQ$/PCLMUL/; s/^LAHF64_SAHF64$/LAHF_SAHF/
      s/^CMPXCHG16B$/GCC_HAVE_SYNC_COMPARE_AND_SWAP_16/
      s/^AVX512_/AVX512/
      s/^SSE4_2$/SSE4_2\nCRC32/; s/^AVX$/AVX\nXSAVE/' | sort >"$work/listed"
  while read -r optimisation flags; do
    [ "$optimisation" = -O3 ] || { echo "objects of level $level: $optimisation"; status=1; }
    # shellcheck disable=SC2086  # flags are words
    macros $flags | comm -13 "$work/baseline" - | sed -nE '/BIGGEST_ALIGNMENT|FP_FAST/d
      s/^_+([A-Z0-9_]*[A-Z0-9])_* 1$/\1/p' | sort >"$work/allowed"
    if ! diff -u "$work/listed" "$work/allowed" >"$work/difference"; then
      echo "level $level asks for other features (-) than it is compiled with (+): $flags"
      sed -n 's/^[-+][A-Z]/    &/p' "$work/difference"
      status=1
    fi
  done <"$work/flags"
  echo "$level: $(wc -l <"$work/listed") features"
done
exit "$status"
