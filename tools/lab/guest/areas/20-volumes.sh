# shellcheck shell=bash
# Volumes: short of space, out of inodes, stopped by errors.
modprobe -a btrfs xfs dm_mod
A=$(by LABSATA0) B=$(by LABSATA1) C=$(by LABSATA2)
mkdir -p /volume1
cp /etc/fstab /tmp/fstab

mkfs.ext4 -q -m 0 "$A" && mount "$A" /volume1
quiet "volume, empty"
leave /volume1 3
state "volume nearly full" volume_space '{0} 1{1} {2}'
BY_HAND='rm /volume1/filler' as_told "Volume 1"
gone
leave /volume1 3
bayless
state "volume nearly full, on a model without bays" bayless_space '{0} 1{1} {2}'
BY_HAND='rm /volume1/filler' as_told "Volume 1"
gone
with_bays
umount /volume1

mkfs.vfat "$A" && mount "$A" /volume1
quiet "FAT volume, empty"
leave /volume1 3
state "FAT volume nearly full" volume_space '{0} 1{1} {2}'
rm /volume1/filler
gone
umount /volume1
wipefs -aq "$A"

mkfs.ext4 -q -m 0 -N 128 "$A" && mount "$A" /volume1
number=0
while touch "/volume1/$((number += 1))"; do :; done
state "inodes gone" volume_inodes '{0} 1{1} {2}'
as_told "Volume 1"
bayless
state "inodes gone, on a model without bays" bayless_inodes '{0} 1{1} {2}'
BY_HAND='rm /volume1/[0-9]*' as_told "Volume 1"
gone
with_bays
umount /volume1

# errors_count alone: an old error, or one that did not stop it.
mkfs.ext4 -q -O ^has_journal "$A" && mount -o errors=continue "$A" /volume1
echo 1 >"/sys/fs/ext4/$(name_of "$A")/trigger_fs_error"
echo "$A /volume1 ext4 noauto 0 0" >>/etc/fstab
state "ext4 with a counted error" storage_warning
as_told "Volume 1"
gone
umount /volume1

# stopped FILE-SYSTEM MOUNT: on a device that fails from then on.
stopped() {
  "mkfs.$1" -q "$A"
  failing_device lab "$A"
  echo "/dev/mapper/lab $2 $1 noauto${3:+,$3} 0 0" >/etc/fstab
  mount "$2"
  quiet "$1 on a device mapping at $2"
  touch "$2/file"
  sync -f "$2"
  break_device lab
  # What is in memory can be changed; writing it down is what fails.
  mv "$2/file" "$2/other"
  sync -f "$2"
  ls "$2/lost+found"
}
# mended VOLUME WORDS: the device answers again, and the rest is as told.
mended() {
  BY_HAND="mend_device lab $A" as_told "$2"
  mountpoint -q "$1" || report FAIL "$STATE, as told" "-> $1 is not mounted"
  gone
  umount "$1"
  dmsetup remove lab
  wipefs -aq "$A"
}
stopped ext4 /volume1 errors=remount-ro
state "ext4 stopped by I/O errors" storage_danger
mended /volume1 "Volume 1"
stopped xfs /volume1
state "XFS shut down" storage_danger
mended /volume1 "Volume 1"
# Nothing may run that wants the real /var for these moments.
stopped ext4 /var errors=remount-ro
state "system volume (/var, ext4) in error" system_crashed
mended /var /var
stopped xfs /var
state "system volume (/var, XFS) shut down" system_crashed
mended /var /var

cp /tmp/fstab /etc/fstab

mkfs.btrfs -q -f -d raid1 -m raid1 "$A" "$B"
udevadm settle
mount "$A" /volume1
quiet "btrfs of two devices, well"
tear_out "$B"
echo x >/volume1/file
btrfs filesystem sync /volume1
state "btrfs, device lost" storage_warning
umount /volume1
mount -o degraded "$A" /volume1
state "btrfs, mounted without a device" storage_warning
as_told "Volume 1" "/dev/NEW-DISK=$C"
gone
umount /volume1
put_back
wipefs -aq "$A" "$(by LABSATA1)" "$C"
btrfs device scan --forget
gone
