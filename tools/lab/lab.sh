#!/usr/bin/env bash
# A throw-away virtual appliance with real kernel devices: Debian's stock kernel under QEMU, a
# small Debian root, emulated disks, sticks, cards, controllers. Nothing is installed into this
# machine's kernel. docs/lab.md tells what the hardware is and how each state comes about.
set -euo pipefail
LAB=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd -P)
SOURCE=$(cd "$LAB/../.." && pwd -P)
. "$SOURCE/tools/lib.sh"

LAB_WORK=${LAB_WORK:-${XDG_CACHE_HOME:-${HOME:?set HOME, XDG_CACHE_HOME or LAB_WORK}/.cache}/vela-lab}
LAB_MEM=${LAB_MEM:-1024}
LAB_SMP=${LAB_SMP:-1}
LAB_ACCEL=${LAB_ACCEL:-auto}
LAB_CPU=${LAB_CPU:-Nehalem}
LAB_TIMEOUT=${LAB_TIMEOUT:-900}
. "$SOURCE/tools/lab/image.sh"
. "$SOURCE/tools/lab/machine.sh"

usage() {
  cat <<'TEXT'
usage: tools/lab/lab.sh build                          make the appliance's image (once; root)
       tools/lab/lab.sh run [--share DIR] COMMAND...   boot, run the command in DIR, power off
       tools/lab/lab.sh shell [--share DIR]            a root shell on the serial console (Ctrl-A X ends it)
       tools/lab/lab.sh obstacle                       why there is no lab on this machine; status 1 when there is
       tools/lab/lab.sh help

DIR (by default the current folder) is /host in the guest, where the command starts; tools/lab/guest
is /lab. One argument is a shell line. The exit status is the command's; 125 when there was none.

  LAB_WORK     where the image and its runs live       [~/.cache/vela-lab]
  LAB_MEM      memory in MiB                           [1024]
  LAB_SMP      processors                              [1]
  LAB_ACCEL    auto, kvm or tcg                        [auto]
  LAB_CPU      processor model when emulated           [Nehalem; max for AVX, a third slower]
  LAB_TIMEOUT  seconds before the machine is cut off   [900]

Example: tools/lab/lab.sh run 'lsblk; cat /proc/mdstat'
TEXT
}

run() {
  local share=$1 started=$SECONDS status
  shift
  [ $# -gt 0 ] || { usage >&2; exit 64; }
  boot "$share" run "$*"
  status=$(cat "$RUN/own/status" 2>/dev/null) || {
    mv -f "$RUN/console.log" "$LAB_WORK/console.log"
    say "the appliance gave no answer; its console is in $LAB_WORK/console.log"
    exit 125
  }
  say "$(accelerator): up after $(cat "$RUN/own/up") s of its own clock, $((SECONDS - started)) s in all"
  exit "$status"
}

command=${1:-help}
[ $# = 0 ] || shift
share=$PWD
if [ "${1-}" = --share ]; then
  share=$(cd "${2:?--share DIR}" && pwd -P)
  shift 2
fi
case $command in
  build | run | shell) need lab && build_image ;;
  obstacle) if image_obstacle; then exit; else exit 1; fi ;;
  help) usage && exit ;;
  *) usage >&2 && exit 64 ;;
esac
case $command in
  run) run "$share" "$@" ;;
  shell) boot "$share" shell ;;
esac
