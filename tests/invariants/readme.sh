#!/bin/sh
# The README's steps, run as they are written, end in a program that runs. Only `sudo` is another one: it
# installs below a temporary directory, and no packages (with --really it is the machine's own).
# usage: readme.sh [--really] <source directory>
set -eu
really=
[ "$1" != --really ] || { really=yes; shift; }
source=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# The blocks of a language: those of C and C++ are programs, those of sh are the steps in order.
sed -n '/^```c$/,/^```$/p' "$source/README.md" | sed '/^```/d' >"$work/program.c"
sed -n '/^```cpp$/,/^```$/p' "$source/README.md" | sed '/^```/d' >"$work/program.cc"
sed -n '/^```sh$/,/^```$/p' "$source/README.md" | sed '/^```/d' >"$work/steps"
for needed in 'cmake -S \.' 'cmake --install' ldconfig 'pkg-config' '^\./program$' '^\./program_cc$'; do
  grep -q "$needed" "$work/steps" || { echo "no step of the README has: $needed"; exit 1; }
done

# A fresh checkout with the program in it; the build does not read files of other builds.
mkdir "$work/vek" "$work/bin"
tar -C "$source" --exclude=./build --exclude=./out --exclude=./.git -cf - . | tar -C "$work/vek" -xf -
cp "$work/program.c" "$work/program.cc" "$work/vek"
if [ -z "$really" ]; then
  root=$work/root
  cat >"$work/bin/sudo" <<END
#!/bin/sh
case \$1 in
  apt-get | ldconfig) echo "left out: \$*" ;;
  *) DESTDIR=$root exec "\$@" ;;
esac
END
  chmod +x "$work/bin/sudo"
  PATH=$work/bin:$PATH
  export PATH PKG_CONFIG_PATH="$root/usr/local/lib/pkgconfig" LD_LIBRARY_PATH="$root/usr/local/lib"
fi
cd "$work/vek"
[ -z "${CCACHE_BASEDIR-}" ] || export CCACHE_BASEDIR="$PWD"
sh -eux "$work/steps"
