# shellcheck shell=bash
# Software RAID of each level: degraded, rebuilding, failed; and what it does when it is well.
modprobe -a raid0 raid1 raid456
A=$(by LABSATA0) B=$(by LABSATA1) C=$(by LABSATA2)
D=$(by LABSCSI0) E=$(by LABSCSI1) F=$(by LABSCSI2) G=$(by LABSCSI3)
of() { cat "/sys/block/$1/md/$2"; }
slow() { echo 500 | tee "/sys/block/$1/md/sync_speed_max" >"/sys/block/$1/md/sync_speed_min"; }
make() { # make NAME LEVEL DISKS...
  local array=$1 level=$2
  shift 2
  build_array "$array" "$level" --assume-clean --raid-devices=$# "$@"
}
build_array() { # build_array NAME LEVEL ARGUMENTS...
  local array=$1 level=$2 size=(--size=65536)
  shift 2
  [ "$level" != 0 ] || size=()
  mdadm --create "/dev/$array" --run --metadata=1.2 --level="$level" "${size[@]}" "$@"
  udevadm settle
}
scrap() { # scrap NAME DISKS...
  mdadm --stop "/dev/$1"
  udevadm settle
  shift
  mdadm --zero-superblock "$@"
}
# put_in NAME DISK: as a new member; it rebuilds slowly.
put_in() {
  mdadm "/dev/$1" --remove "$2"
  mdadm --zero-superblock "$2"
  slow "$1"
  mdadm "/dev/$1" --add "$2"
  until_is 10 recover of "$1" sync_action
}
whole() { # whole NAME: lets it rebuild to the end
  echo 900000 >"/sys/block/$1/md/sync_speed_max"
  until_is 60 idle of "$1" sync_action
}

make md1 1 "$D" "$E"
quiet "md raid1, well"
mdadm /dev/md1 --fail "$E"
state "md raid1, degraded" storage_warning
put_in md1 "$E"
state "md raid1, rebuilding" storage_warning
whole md1
gone
slow md1
echo check >/sys/block/md1/md/sync_action
quiet "md raid1, being checked"
echo idle >/sys/block/md1/md/sync_action
mdadm /dev/md1 --add "$F"
quiet "md raid1, with a hot spare"
mdadm /dev/md1 --remove "$F"
mdadm /dev/md1 --fail "$E"
mdadm /dev/md1 --fail "$D"
state "md raid1, last member failed" storage_danger
scrap md1 "$D" "$E" "$F"
gone

echo 500 >/proc/sys/dev/raid/speed_limit_max
build_array md1 1 --raid-devices=2 "$D" "$E"
until_is 5 resync of md1 sync_action
quiet "md raid1, initialising"
scrap md1 "$D" "$E"

make md2 1 "$D" "$E"
mkswap /dev/md2
swapon /dev/md2
mdadm /dev/md2 --fail "$E"
state "member of the swap array, failed" disk_crashed
put_in md2 "$E"
whole md2
gone
swapoff /dev/md2
scrap md2 "$D" "$E"

# Its first build is a rebuild of the last disk: only the collector can tell the two apart.
collects md
build_array md5 5 --raid-devices=3 "$A" "$B" "$C"
until_is 5 recover of md5 sync_action
quiet "md raid5, first build"
collects nothing
rm -rf /run/vela-platform
state "md raid5, first build, without the collector" storage_warning
whole md5
gone
collects md
quiet "md raid5, built"
mdadm /dev/md5 --fail "$C"
state "md raid5, degraded" storage_warning
put_in md5 "$C"
state "md raid5, rebuilding" storage_warning
whole md5
gone
collects nothing
mdadm /dev/md5 --fail "$A"
mdadm /dev/md5 --fail "$B"
state "md raid5, failed" storage_danger
scrap md5 "$A" "$B" "$C"
gone

build_array md6 6 --raid-devices=4 "$D" "$E" "$F" "$G"
until_is 5 resync of md6 sync_action
quiet "md raid6, initialising"
scrap md6 "$D" "$E" "$F" "$G"
echo 200000 >/proc/sys/dev/raid/speed_limit_max
make md6 6 "$D" "$E" "$F" "$G"
mdadm /dev/md6 --fail "$D"
state "md raid6, one member failed" storage_warning
mdadm /dev/md6 --fail "$E"
state "md raid6, two members failed" storage_warning
put_in md6 "$D"
state "md raid6, rebuilding" storage_warning
whole md6
put_in md6 "$E"
whole md6
gone
mdadm /dev/md6 --fail "$D"
mdadm /dev/md6 --fail "$E"
mdadm /dev/md6 --fail "$F"
state "md raid6, failed" storage_danger
scrap md6 "$D" "$E" "$F" "$G"
gone

make md0 0 "$F" "$G"
mkfs.ext4 -q /dev/md0
mkdir -p /mnt/md0
mount /dev/md0 /mnt/md0
tear_out "$G"
echo x >/mnt/md0/file
sync
state "md raid0, disk torn out" storage_danger
umount /mnt/md0
scrap md0 "$F"
put_back
# udev has made an array of the lone member.
mdadm --stop --scan
mdadm --zero-superblock "$(by LABSCSI3)"
gone
