#!/bin/sh
# The packages' descriptions agree with the tree: versions, symbols, the files that are installed; the
# Conan recipe lists all that the library is built from, and it and the vcpkg port can be read.
# usage: packaging.sh <cmake> <python3> <source directory> <build directory>
set -eu
export LC_ALL=C
cmake=$1 python=$2 source=$3 build=$4
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
status=0
wrong() {
  echo "$*"
  status=1
}

version=$(sed -n 's/^project(vek VERSION \([0-9.]*\) .*/\1/p' "$source/CMakeLists.txt")
short=${version%.*}
# says <file> <line with the version in it>
says() {
  grep -qF -- "$2" "$source/$1" || wrong "$1 does not say: $2"
}
says debian/changelog "vek ($version-"
says packaging/vcpkg/vek/vcpkg.json "\"version\": \"$version\""
says packaging/conan/conanfile.py "version = \"$version\""
says include/vek/vek.h "VEK_VERSION_STRING \"$version\""
says README.md "find_package(vek $short REQUIRED)"
says CHANGELOG.md "## $version"
says cmake/symbols.map "VEK_$short {"

sed -n 's/^\(VEK_[0-9.]*\) {.*/\1/p' "$source/cmake/symbols.map" | sort >"$work/nodes"
sed -n 's/^ (symver)\(VEK_[0-9.]*\) [0-9.]*$/\1/p' "$source/debian/libvek0.symbols" | sort |
  diff "$work/nodes" - || wrong "debian/libvek0.symbols has other versions than cmake/symbols.map"

# What is installed is in one package each; what a package lists is installed.
"$cmake" --install "$build" --prefix "$work/usr" >/dev/null
(cd "$work" && find usr ! -type d) | sort >"$work/installed"
sed 's|^usr/lib/\*/|usr/lib/|; s|\*|[^ ]*|g; s|\.|\\.|g' "$source"/debian/*.install >"$work/patterns"
sed "s|^usr/lib\(64\)\{0,1\}/\([^/ ]*-linux-[a-z0-9]*/\)\{0,1\}|usr/lib/|" "$work/installed" >"$work/files"
grep -vE "$(sed 's/^/^/; s/$/(\/|$)/' "$work/patterns" | paste -sd '|' -)" "$work/files" >"$work/left" || true
[ ! -s "$work/left" ] || wrong "no Debian package has: $(paste -sd ' ' "$work/left")"
while read -r pattern; do
  case $pattern in *python*) continue ;; esac
  grep -qE "^$pattern(/|\$)" "$work/files" || wrong "nothing that is installed is $pattern"
done <"$work/patterns"

"$python" - "$source" "$work/tree" <<'END'
import ast, glob, json, os, shutil, sys

source, tree = sys.argv[1:]
json.load(open(source + "/packaging/vcpkg/vek/vcpkg.json"))
recipe = ast.parse(open(source + "/packaging/conan/conanfile.py").read())
parts = next(ast.literal_eval(node.value) for node in ast.walk(recipe)
             if isinstance(node, ast.Assign) and getattr(node.targets[0], "id", "") == "parts")
for part in parts:
    name = part.removesuffix("/*")
    to = os.path.join(tree, name)
    if part == name:
        os.makedirs(tree, exist_ok=True)
        shutil.copy(os.path.join(source, name), to)
    else:
        shutil.copytree(os.path.join(source, name), to)
END
"$cmake" -S "$work/tree" -B "$work/configured" >"$work/log" 2>&1 ||
  { cat "$work/log"; wrong "the sources that the Conan recipe lists are not all"; }
exit "$status"
