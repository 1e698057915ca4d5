# shellcheck shell=bash
# The machine that QEMU plays, and one run of it. Sourced by lab.sh.

# /dev/kvm alone proves nothing: some nested set-ups cannot run a stock kernel. So the kernel is
# booted with it for some seconds, once, and its first lines are looked for.
accelerator() {
  [ "$LAB_ACCEL" = auto ] || { echo "$LAB_ACCEL"; return; }
  if [ ! -e "$LAB_WORK/accelerator" ]; then
    if [ -w /dev/kvm ] && timeout 8 qemu-system-x86_64 -M q35 -accel kvm -cpu host -m 256 \
      -kernel "$LAB_WORK/vmlinuz" -append 'console=ttyS0 panic=-1' -no-reboot -display none \
      -monitor none -serial stdio </dev/null 2>/dev/null | grep -aq 'Linux version'; then
      echo kvm
    else
      echo tcg
    fi >"$LAB_WORK/accelerator"
  fi
  cat "$LAB_WORK/accelerator"
}

# QEMU's argument for a drive: drive ID FILE of a file, fresh_drive ID SIZE of an empty one.
drive() { echo "file=$2,format=raw,if=none,id=$1,cache=unsafe"; }
fresh_drive() {
  truncate -s "$2" "$RUN/$1.raw"
  drive "$1" "$RUN/$1.raw"
}

# machine_arguments SHARE: into QEMU_ARGUMENTS.
machine_arguments() {
  local share=$1 accel processor=$LAB_CPU number
  accel=$(accelerator)
  case $accel in
    kvm) processor=host ;;
    tcg) accel=tcg,thread=multi ;;
  esac
  # shellcheck disable=SC2054 # the commas are QEMU's
  QEMU_ARGUMENTS=(-M q35 -accel "$accel" -cpu "$processor" -smp "$LAB_SMP" -m "$LAB_MEM"
    -nodefaults -no-user-config -no-reboot -display none
    -kernel "$LAB_WORK/vmlinuz" -initrd "$LAB_WORK/initrd"
    # The system disk: what is written to it goes to a file that nobody sees again.
    -drive "$(drive system "$LAB_WORK/root.img"),snapshot=on" -device virtio-blk-pci,drive=system
    -virtfs "local,path=$share,mount_tag=host,security_model=none,multidevs=remap"
    -virtfs "local,path=$RUN/own,mount_tag=own,security_model=none"
    -virtfs "local,path=$RUN/guest,mount_tag=lab,security_model=none,readonly=on"
    # QEMU's monitor on a socket, and the same socket as a serial port within the guest: the
    # guest pulls cables and disks out of its own machine.
    -chardev "socket,id=monitor,path=$RUN/qmp,server=on,wait=off" -mon chardev=monitor,mode=control
    -device virtio-serial-pci
    -chardev "socket,id=inside,path=$RUN/qmp" -device virtserialport,chardev=inside,name=qmp
    -device virtio-scsi-pci,id=scsi -device qemu-xhci,id=usb -device sdhci-pci,id=sd
    -drive "$(fresh_drive nvme0 128M)" -device nvme,id=nvme,serial=LABNVME0,drive=nvme0
    -drive "$(fresh_drive card0 64M)" -device sd-card,bus=sd-bus,drive=card0
    # Two network cards without a way out, a management controller, a battery and thermal zone.
    -netdev user,id=net0,restrict=on -device virtio-net-pci,id=nic0,netdev=net0
    -netdev user,id=net1,restrict=on -device virtio-net-pci,id=nic1,netdev=net1
    -chardev "socket,id=controller,path=$RUN/bmc,reconnect=1"
    -device ipmi-bmc-extern,id=bmc,chardev=controller -device isa-ipmi-kcs,bmc=bmc
    -acpitable "file=$LAB_WORK/devices.aml"
    -object rng-random,id=random,filename=/dev/urandom -device virtio-rng-pci,rng=random)
  for number in 0 1 2; do
    QEMU_ARGUMENTS+=(-drive "$(fresh_drive "sata$number" 512M)"
      -device "ide-hd,id=hd$number,bus=ide.$number,drive=sata$number,serial=LABSATA$number")
  done
  # The last one in a bay of the kind whose disks the kernel calls removable.
  for number in 0 1 2 3; do
    QEMU_ARGUMENTS+=(-drive "$(fresh_drive "scsi$number" 128M)"
      -device "scsi-hd,id=sd$number,bus=scsi.0,drive=scsi$number,serial=LABSCSI$number,removable=$([ "$number" = 3 ] && echo on || echo off)")
  done
  # Sixteen gigabytes that take no room until somebody writes there.
  QEMU_ARGUMENTS+=(-drive "$(fresh_drive big0 16G)" -device "scsi-hd,id=sd4,bus=scsi.0,drive=big0,serial=LABBIG0")
  for number in 0 1; do
    QEMU_ARGUMENTS+=(-drive "$(fresh_drive "usb$number" 64M)"
      -device "usb-storage,id=stick$number,bus=usb.0,drive=usb$number,serial=LABUSB$number,removable=on")
  done
}

# boot SHARE run|shell COMMAND: until the machine goes off. What its command prints comes out here.
boot() {
  local share=$1 mode=$2 kernel_line reader waited=0 status=0
  RUN=$(mktemp -d -p "$LAB_WORK")
  trap end_run EXIT
  # What this machine and its guest tell each other: /own there.
  mkdir "$RUN/own"
  printf '%s\n' "${3-}" >"$RUN/own/command"
  cp -a "$LAB/guest" "$RUN/guest"
  machine_arguments "$share"
  kernel_line="console=ttyS0 loglevel=4 panic=-1 random.trust_cpu=on mitigations=off nokaslr norandmaps audit=0 no_timer_check"
  # The management controller is there for the areas that ask it (see the guest's lib.sh).
  kernel_line+=" modprobe.blacklist=ipmi_si systemd.unit=lab.target systemd.show_status=0 lab.mode=$mode"
  python3 "$LAB/guest/bmc.py" "$RUN/bmc" "$RUN/own/bmc.state" >"$RUN/bmc.ready" &
  CONTROLLER=$!
  until [ -s "$RUN/bmc.ready" ] || [ $((waited += 1)) -gt 50 ]; do sleep 0.1; done
  if [ "$mode" = shell ]; then
    qemu-system-x86_64 "${QEMU_ARGUMENTS[@]}" -append "$kernel_line" -serial mon:stdio || status=$?
    return "$status"
  fi
  # The command's output has a port of its own; the kernel's goes to a file.
  mkfifo "$RUN/out"
  cat "$RUN/out" &
  reader=$!
  timeout --foreground "$LAB_TIMEOUT" nice -n 10 qemu-system-x86_64 "${QEMU_ARGUMENTS[@]}" \
    -append "$kernel_line" -serial "file:$RUN/console.log" \
    -chardev "file,id=out,path=$RUN/out" -device virtserialport,chardev=out,name=out </dev/null || status=$?
  # Without a writer the reader would wait for one.
  [ "$status" = 0 ] || : <>"$RUN/out"
  wait "$reader" || true
  [ "$status" != 124 ] || say "the machine was switched off after $LAB_TIMEOUT s"
}

end_run() {
  [ -z "${CONTROLLER-}" ] || kill "$CONTROLLER" 2>/dev/null || true
  rm -rf "${RUN:?}"
}
