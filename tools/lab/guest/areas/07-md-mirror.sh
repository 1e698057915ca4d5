# shellcheck shell=bash disable=SC1091,SC2154
# Mirrors and stripes of software RAID: degraded, rebuilding, failed; and what they do when well.
. "$LAB/md.sh"

make md1 1 "$D" "$E"
quiet "md raid1, well"
mdadm /dev/md1 --fail "$E"
state "md raid1, degraded" storage_warning
as_told LABSCSI1 "/dev/NEW-DISK=$G"
gone
mdadm /dev/md1 --fail "$G"
put_in md1 "$G"
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
mdadm /dev/md1 --fail "$G"
mdadm /dev/md1 --fail "$D"
state "md raid1, last member failed" storage_danger
as_told md1
state "md raid1, put together again of what it has left" storage_warning
as_told md1 "/dev/NEW-DISK=$E"
gone
scrap md1 "$D" "$E"
mdadm --zero-superblock "$F" "$G"

echo 500 >/proc/sys/dev/raid/speed_limit_max
build_array md1 1 --raid-devices=2 "$D" "$E"
until_is 5 resync of md1 sync_action
quiet "md raid1, initialising"
scrap md1 "$D" "$E"
echo 200000 >/proc/sys/dev/raid/speed_limit_max

make md2 1 "$D" "$E"
mkswap /dev/md2
swapon /dev/md2
mdadm /dev/md2 --fail "$E"
state "member of the swap array, failed" disk_crashed
as_told LABSCSI1 "/dev/NEW-DISK=$F"
whole md2
gone
swapoff /dev/md2
scrap md2 "$D" "$F"
mdadm --zero-superblock "$E"

# Empty places that are meant, and such that are not: only the superblock knows.
collects md
build_array md1 1 --assume-clean --raid-devices=2 "$D" missing
quiet "md raid1, made with one missing"
mdadm /dev/md1 --add "$E"
whole md1
quiet "md raid1, filled up later"
mdadm /dev/md1 --fail "$E" --remove "$E"
state "md raid1, one of two taken out" storage_warning
as_told md1 "/dev/NEW-DISK=$E"
gone
scrap md1 "$D" "$E"
make md1 1 "$D" "$E"
mdadm --grow /dev/md1 --raid-devices=4 --force
quiet "md raid1, grown ahead of its disks"
scrap md1 "$D" "$E"
make md1 1 "$A" "$D" "$E" "$F" "$G"
for disk in "$A" "$F" "$G"; do mdadm /dev/md1 --fail "$disk" --remove "$disk"; done
state "md raid1 of five, three taken out" storage_warning
collects nothing
state "md raid1 of five, three taken out, without the collector" storage_warning
scrap md1 "$A" "$D" "$E" "$F" "$G"
gone

make md0 0 "$F" "$G"
mdadm --stop /dev/md0
mdadm --incremental "$F"
state "md raid0, one of two found" storage_danger
# Its other disk is plugged in.
mdadm --incremental "$G"
gone
scrap md0 "$F" "$G"

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
