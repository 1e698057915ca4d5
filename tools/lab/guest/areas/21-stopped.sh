# shellcheck shell=bash disable=SC1091
# File systems that stopped writing, whatever told them to; and those that are read-only on purpose.
modprobe -a btrfs xfs dm_mod raid1
. "$LAB/everybody.sh"
A=$(by LABSATA0) D=$(by LABSCSI0) E=$(by LABSCSI1)
mkdir -p /volume1

# broken TYPE OPTIONS: mounted, written to, on a device that fails from then on.
broken() {
  failing_device lab "$A"
  mount ${2:+-o "$2"} /dev/mapper/lab /volume1
  quiet "$1"
  touch /volume1/file
  sync -f /volume1
  break_device lab
  mv /volume1/file /volume1/other
  sync -f /volume1
  touch /volume1/third && sync -f /volume1
  ls /volume1/lost+found
}
mended() {
  umount /volume1
  dmsetup remove lab
  wipefs -aq "$A"
}
mkfs.ext4 -q "$A" && tune2fs -e remount-ro "$A"
broken "ext4, told by its superblock"
state "ext4 stopped by I/O errors, told by its superblock" storage_danger
days=$((3 * 86400))
date -s "@$((EPOCHSECONDS + days))"
state "that ext4, the clock set three days forward" storage_danger
date -s "@$((EPOCHSECONDS - days))"
mended
gone
mkfs.ext4 -q "$A"
broken "ext4, told to go on" errors=continue
touch /volume1/fourth && report FAIL "ext4 told to go on" "-> still writes"
state "ext4 told to go on, its journal aborted" storage_danger
mended
gone
mkfs.btrfs -q -f "$A"
broken "btrfs of one device"
touch /volume1/fourth && report FAIL "btrfs" "-> still writes"
state "btrfs forced read-only" storage_danger
mended
gone

mkfs.ext4 -q "$A" && mount -o ro "$A" /volume1
quiet "ext4 mounted read-only"
mount -o remount,rw /volume1 && mount -o remount,ro /volume1
quiet "ext4 remounted read-only"
umount /volume1

# Two at once, and the lesser one stays.
mdadm --create /dev/md1 --run --assume-clean --metadata=1.2 --level=1 --raid-devices=2 "$D" "$E"
tune2fs -e remount-ro "$A"
broken "ext4 beside a mirror"
mdadm /dev/md1 --fail "$E"
state "ext4 stopped, and a mirror without a disk" storage_danger
mended
state "that mirror, once the ext4 is repaired" storage_warning
mdadm --stop /dev/md1
mdadm --zero-superblock "$D" "$E"
gone

# Inline files are metadata: what is left to them, after the data have the rest.
mkfs.btrfs -q -f -m single -d single "$A" && mount -o max_inline=2048 "$A" /volume1
quiet "btrfs, empty"
left=$(btrfs filesystem usage -b /volume1 | awk '/Device unallocated/ { print $3 }')
fallocate -l "$((left + 4194304))" /volume1/data
python3 - <<'PY'
import os
data = b"x" * 2000
try:
    for number in range(100000):
        with open(f"/volume1/{number}", "wb") as file:
            file.write(data)
except OSError:
    os.sync()
PY
btrfs filesystem usage -b /volume1
state "btrfs without room for metadata" volume_space '{0} 1{1} {2}'
umount /volume1
wipefs -aq "$A"
gone
