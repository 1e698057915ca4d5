# shellcheck shell=bash
# The appliance's software: Debian's stock kernel, a small Debian root on an ext4 image, an
# initramfs that is just enough to mount it, and an ACPI table. Made once, under $LAB_WORK.
# Sourced by lab.sh.

# Kernel modules that no virtual appliance needs: less to copy, less for depmod and udev to read.
UNNEEDED_MODULES="sound drivers/gpu drivers/media drivers/infiniband drivers/staging drivers/iio
drivers/isdn drivers/video drivers/bluetooth drivers/comedi drivers/input drivers/firmware
drivers/platform drivers/mtd drivers/hid drivers/leds drivers/net/wireless drivers/net/wwan
drivers/net/can drivers/net/ethernet drivers/net/usb net/bluetooth net/mac80211 net/wireless
net/can net/sctp net/tipc net/nfc net/openvswitch net/netfilter net/sched fs/ceph fs/cifs
fs/ocfs2 fs/gfs2 fs/afs fs/orangefs fs/jfs fs/f2fs drivers/scsi/lpfc drivers/scsi/qla2xxx
drivers/scsi/bfa drivers/scsi/elx drivers/scsi/mpi3mr drivers/scsi/qedf drivers/scsi/qedi"

image_key() { { cat "$LAB/guest-packages"; declare -f unpack_kernel make_root; echo "$UNNEEDED_MODULES"; } | sha256sum; }
image_is_made() { [ "$(cat "$LAB_WORK/key" 2>/dev/null)" = "$(image_key)" ]; }

# Why the image cannot be made here; status 1 when it can.
image_obstacle() {
  image_is_made && return 1
  if [ "$(id -u)" != 0 ]; then
    echo "its image takes root to make, once: sudo LAB_WORK=$LAB_WORK tools/lab/lab.sh build"
  elif ! unshare --mount --propagation unchanged true 2>/dev/null; then
    echo "its image takes a root user who may mount, which this container does not allow"
  else
    return 1
  fi
}

build_image() {
  local obstacle started=$SECONDS
  ! obstacle=$(image_obstacle) || die "no lab on this machine: $obstacle"
  mkdir -p "$LAB_WORK"
  (
    flock 9
    if ! image_is_made; then
      rm -rf "$LAB_WORK/key" "$LAB_WORK/kernel"
      if ! unpack_kernel || ! make_root; then die "the appliance's image could not be made; the reason is above"; fi
      image_key >"$LAB_WORK/key"
      [ -z "${SUDO_UID-}" ] || chown -R "$SUDO_UID" "$LAB_WORK"
      rm -f "$LAB_WORK/initrd"
      say "appliance image made in $((SECONDS - started)) s, $(du -m "$LAB_WORK/root.img" | cut -f1) MiB"
    fi
    make_initramfs && make_acpi_table && accelerator >/dev/null
  ) 9>"$LAB_WORK/lock"
}

# Beside us, never installed on this machine.
unpack_kernel() {
  local kernel=$LAB_WORK/kernel package
  mkdir -p "$kernel"
  package=$(kernel_package)
  [ -n "$package" ] || { apt-get update -qq && package=$(kernel_package); }
  say "kernel: $package"
  (cd "$kernel" && apt-get download -qq -o APT::Sandbox::User=root "$package" && dpkg -x linux-image-*.deb . && rm linux-image-*.deb) || return
  # shellcheck disable=SC2086 # one word a folder
  (cd "$kernel"/lib/modules/*/kernel && rm -rf $UNNEEDED_MODULES)
  # Without signatures: verifying one takes an emulated processor as long as starting a program.
  find "$kernel/lib/modules" -name '*.ko' -print0 | xargs -0 strip --strip-debug
  depmod -b "$kernel" "$(kernel_version)"
  cp "$kernel"/boot/vmlinuz-* "$LAB_WORK/vmlinuz"
}

kernel_package() { apt-cache depends linux-image-amd64 2>/dev/null | awk '/Depends: linux-image-[0-9]/ { print $2; exit }'; }
kernel_version() { basename "$LAB_WORK"/kernel/lib/modules/*; }

make_root() {
  local root=$LAB_WORK/root packages sources=() size
  packages=$(sed 's/#.*//' "$LAB/guest-packages" | xargs | tr ' ' ,)
  [ ! -e /etc/apt/sources.list.d/debian.sources ] || sources=(/etc/apt/sources.list.d/debian.sources)
  say "appliance root: Debian 12"
  rm -rf "$root"
  mmdebstrap --quiet --mode=root --variant=essential --include="$packages" \
    --dpkgopt='path-exclude=/usr/share/man/*' --dpkgopt='path-exclude=/usr/share/locale/*' \
    --dpkgopt='path-exclude=/usr/share/doc/*' bookworm "$root" "${sources[@]}" >&2 || return
  rm -rf "$root"/var/cache/apt/* "$root"/var/lib/apt/lists/*
  mkdir -p "$root"/{host,lab} "$root/lib/modules"
  cp -a "$LAB_WORK"/kernel/lib/modules/* "$root/lib/modules/"
  echo appliance >"$root/etc/hostname"
  # Without a machine id systemd takes each boot for the first and enables everything anew.
  echo 0123456789abcdef0123456789abcdef >"$root/etc/machine-id"
  # And without these files it rebuilds its caches.
  touch "$root/etc/.updated" "$root/var/.updated"
  size=$(du -sm "$root" | cut -f1)
  rm -f "$LAB_WORK/root.img"
  mke2fs -q -t ext4 -O ^has_journal -L appliance -d "$root" "$LAB_WORK/root.img" "$((size * 5 / 4 + 200))M" || return
  rm -rf "$root"
}

make_initramfs() {
  local folder initrd=$LAB_WORK/initrd newest
  newest=$(find "$LAB/guest/boot" "$LAB_WORK/vmlinuz" -type f -newer "$initrd" 2>/dev/null | head -n 1)
  [ ! -e "$initrd" ] || [ -n "$newest" ] || return 0
  folder=$(mktemp -d -p "$LAB_WORK")
  mkdir -p "$folder"/{appliance,bin,dev,modules,proc}
  cp /bin/busybox "$folder/bin/busybox"
  cp -a "$LAB/guest/boot/." "$folder/"
  chmod 755 "$folder/init"
  boot_modules | cat -n | while read -r number module; do
    cp "$module" "$folder/modules/$(printf %02d "$number").ko"
  done
  (cd "$folder" && find . | cpio --quiet -o -H newc | gzip -1) >"$initrd.new"
  mv "$initrd.new" "$initrd"
  rm -rf "$folder"
}

# In the order in which they must be loaded.
boot_modules() {
  local module
  for module in virtio_pci virtio_blk ext4; do
    modprobe -d "$LAB_WORK/kernel" -S "$(kernel_version)" --show-depends "$module"
  done | awk '$1 == "insmod" && !seen[$2]++ { print $2 }'
}

# A battery, mains that are off and a hot thermal zone.
make_acpi_table() {
  local source=$LAB/guest/devices.asl table=$LAB_WORK/devices.aml
  [ ! "$table" -nt "$source" ] || return 0
  iasl -p "${table%.aml}" "$source" >"$table.log" 2>&1 || { cat "$table.log" >&2; die "iasl could not compile $source"; }
}
