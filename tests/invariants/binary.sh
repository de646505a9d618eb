#!/bin/sh
# What the built library must be like: it needs the C library alone, has no writable data and does
# nothing at load time, is hardened.
# usage: binary.sh <readelf> <nm> <libvek.so> <glibc|cpuid|static> [IBT|BTI]
#        the last arguments are how the level is found, and the protection of indirect branches that
#        the library was built with
set -eu
export LC_ALL=C
readelf=$1 nm=$2 shared=$3 detection=$4 protection=${5-}
status=0

# none <what is wrong> <lines>: fails with the lines unless there are none.
none() {
  [ -n "$2" ] || return 0
  printf '%s:\n%s\n' "$1" "$2"
  status=1
}
# some <what is missing> <lines>: fails if there are none.
some() {
  [ -n "$2" ] || none "missing" "$1"
}

dynamic=$("$readelf" -dW "$shared")
segments=$("$readelf" -lW "$shared")
sections=$("$readelf" -SW "$shared" | sed -n 's/^ *\[ *[0-9]*\] \(\.[^ ]*\) */\1 /p')
# `|| true`: no match is an answer here.
in_dynamic() { printf '%s\n' "$dynamic" | grep -E "$1" || true; }
in_segments() { printf '%s\n' "$segments" | grep -E "$1" || true; }

none "needs more than the C library" \
  "$(in_dynamic '\(NEEDED\)' | grep -vE '\[(libc|libm)\.|\[ld-' || true)"
none "uses the C++ runtime" \
  "$("$nm" -D --undefined-only "$shared" | grep -E ' (_Z|__cxa_|__gxx_|_Unwind_)' || true)"
some "soname libvek.so.0" "$(in_dynamic '\(SONAME\).*\[libvek\.so\.0\]')"

# Only what the loader relocates and then protects may be writable in the file, and the number of the
# level where finding it takes long.
none "writable data" "$(printf '%s\n' "$sections" | awk -v detection="$detection" '
  detection == "cpuid" && $1 == ".bss" && $5 ~ /^0+[48]$/ { next }
  $7 ~ /W/ && $5 !~ /^0+$/ && $1 !~ /^\.(data\.rel\.ro.*|dynamic|got|got\.plt|relro_padding)$/')"
none "runs code at load time" "$(in_dynamic '\((PREINIT|INIT|FINI)(_ARRAY)?\)')"
none "code needs relocation" "$(in_dynamic 'TEXTREL')"
none "the allocator pairs cannot be replaced" "$(in_dynamic 'SYMBOLIC')"
some "binding at load time (-z now)" "$(in_dynamic 'BIND_NOW|FLAGS_1.*NOW')"
some "read-only relocations (-z relro)" "$(in_segments 'GNU_RELRO')"
some "a stack that is not executable" "$(in_segments 'GNU_STACK.* RW ')"
[ -z "$protection" ] || some "protected indirect branches in all objects ($protection)" \
  "$("$readelf" -nW "$shared" | grep -w "$protection" || true)"
none "a segment is writable and executable" "$(in_segments ' RWE ')"

exit "$status"
