#!/bin/sh
# Runs a static program on a machine that Bochs emulates, with the kernel beside this script, and prints
# what the program prints. VEK_HIGHEST_LEVEL is handed on.
# usage: run.sh <processor of Bochs> <program> <argument>...
set -eu
here=$(dirname "$0")
processor=$1 program=$2
shift 2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

mkdir -p "$work/disc/boot/grub"
g++ -std=c++20 -Wall -Wextra -O2 -ffreestanding -fno-exceptions -fno-rtti -fno-stack-protector -fno-pic \
  -fno-asynchronous-unwind-tables -mno-red-zone -mgeneral-regs-only -nostdlib -static -no-pie \
  -Wl,--build-id=none -Wl,-n -Wl,--no-warn-rwx-segments -Wl,-z,noexecstack -T "$here/kernel.ld" \
  "$here/boot.S" "$here/kernel.cc" -o "$work/kernel"
# GRUB loads kernels of 32 bits.
objcopy -O elf32-i386 "$work/kernel" "$work/disc/boot/kernel"
strip -o "$work/disc/boot/program" "$program"
cat >"$work/disc/boot/grub/grub.cfg" <<END
set timeout=0
menuentry program {
  multiboot /boot/kernel
  module /boot/program ${VEK_HIGHEST_LEVEL:+VEK_HIGHEST_LEVEL=$VEK_HIGHEST_LEVEL} $(basename "$program") $*
}
END
grub-mkrescue -o "$work/disc.iso" "$work/disc" >"$work/log" 2>&1 || { cat "$work/log" >&2; exit 1; }

cat >"$work/bochsrc" <<END
display_library: term
romimage: file=/usr/share/bochs/BIOS-bochs-latest
vgaromimage: file=/usr/share/bochs/VGABIOS-lgpl-latest
megs: 2048
cpu: model=$processor, ips=50000000, reset_on_triple_fault=0
clock: sync=none
ata0-master: type=cdrom, path=$work/disc.iso, status=inserted
boot: cdrom
com1: enabled=1, mode=file, dev=$work/serial
log: $work/log
panic: action=fatal
speaker: enabled=0
END
echo continue >"$work/commands"
# Its screen is of no use, and it ends with status 1 when the machine is switched off.
TERM=xterm bochs -q -f "$work/bochsrc" -rc "$work/commands" >"$work/screen" 2>&1 </dev/null || true
[ -s "$work/serial" ] || { tail -n 5 "$work/log" >&2; exit 1; }
sed '$d' "$work/serial"
tail -n 1 "$work/serial" | grep -q '^ended with status 0*$'
