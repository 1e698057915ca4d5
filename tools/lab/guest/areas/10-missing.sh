# shellcheck shell=bash disable=SC1091,SC2154
# Storage that is configured and not there: lines of fstab and mdadm.conf, a member, a volume group.
. "$LAB/md.sh"
modprobe -a btrfs dm_mod
. "$LAB/everybody.sh"
collects seen expected
STICK=$(by 'LABUSB1-0:0')
LOST=00000000-1111-2222-3333-444444444444
cp /etc/fstab /tmp/fstab
fstab() { printf '%s\n' "$@" >/etc/fstab; }
tag() { echo "UUID=$(blkid -s UUID -o value "$1")"; }
mkdir -p /data /backup /volume1

fstab "UUID=$LOST /data ext4 noauto 0 0" "UUID=$LOST /data ext4 x-systemd.automount 0 0" \
  "UUID=$LOST none swap sw 0 0" "192.0.2.1:/data /data nfs defaults 0 0" "/dev/sdz1 /data ext4 _netdev 0 0"
quiet "fstab, with lines that need not be mounted"
fstab "UUID=$LOST /data ext4 nofail 0 0"
state "fstab line with nofail, its disk never seen" storage_warning
words "/data (UUID=$LOST) is not mounted: there is no such device"
echo '/data 192.0.2.0/24(rw)' >/etc/exports
state "fstab line with nofail, exported" storage_danger
: >/etc/exports
fstab "UUID=$LOST /data ext4 defaults 0 2"
state "fstab line without its disk" storage_danger
words "/data (UUID=$LOST) is not mounted: there is no such device"
# Another fault beside it, and the greater one is repaired first.
make md1 1 "$D" "$E"
mdadm /dev/md1 --fail "$E"
state "fstab line without its disk, and a mirror without one" storage_danger
fstab
state "that mirror, once the line is gone" storage_warning
scrap md1 "$D" "$E"
gone

mkfs.ext4 -q "$STICK" && mount "$STICK" /backup
fstab "$(tag "$STICK") /backup ext4 defaults 0 2"
quiet "USB disk of fstab"
umount /backup
qmp device_del id=stick1
until_is 10 '' find "/sys/block/$(name_of "$STICK")" -maxdepth 0
quiet "USB disk of fstab, in its drawer"
words "/backup (UUID="

mkfs.ext4 -q -F "$A" && mount "$A" /data
fstab "$(tag "$A") /data ext4 nofail 0 2"
quiet "disk of fstab with nofail"
umount /data
state "disk of fstab with nofail, not mounted" storage_danger
tear_out "$A"
state "disk of fstab with nofail, torn out" storage_danger
words "/data (UUID="
put_back
A=$(by LABSATA0)
mount "$A" /data
gone

# The number of what is away is not given to the next volume, which is full.
umount /data
fstab "$(tag "$A") /volume1 ext4 nofail 0 2"
leave / 3
state "volume 1 not mounted, the system's full" storage_danger
words "/volume1 (UUID="
mount "$A" /volume1
state "volume 1 mounted again, the system's full" volume_space '{0} 2{1} {2}'
rm /filler
gone
umount /volume1
wipefs -aq "$A"

make md/data 0 "$F" "$G"
identity=$(mdadm --detail --brief /dev/md/data | grep -o 'UUID=.*')
mdadm --stop /dev/md/data
fstab
conf() { printf '%s\n' "$@" >/etc/mdadm/mdadm.conf; }
conf "ARRAY <ignore> UUID=00000001:00000002:00000003:00000004"
quiet "mdadm.conf, with a line that ignores an array"
conf "ARRAY /dev/md/other metadata=1.2 name=any:other"
state "array of mdadm.conf away, by name" storage_danger
words "the array /dev/md/other of mdadm.conf is not there"
conf "ARRAY UUID=00000001:00000002:00000003:00000004"
state "array of mdadm.conf away, by UUID" storage_danger
conf "ARRAY /dev/md/data $identity"
mdadm --incremental "$F"
state "raid0 of mdadm.conf, one of two found" storage_danger
mdadm --stop --scan
mdadm --assemble /dev/md/data "$F" "$G"
gone
quiet "raid0 of mdadm.conf, by its name and UUID"
conf "ARRAY /dev/md/data name=any:data"
quiet "raid0 of mdadm.conf, by its name"
mdadm --stop --scan
mdadm --zero-superblock "$F" "$G"
conf

mkfs.btrfs -q -f -d raid1 -m raid1 "$A" "$B"
fstab "$(tag "$A") /data btrfs defaults 0 0"
tear_out "$B"
btrfs device scan --forget
udevadm trigger --settle "$A"
mount /data && report FAIL "btrfs without a member" "-> was mounted"
state "btrfs that refuses to be mounted without a member" storage_danger
words "another member of its btrfs is missing beside"
put_back
B=$(by LABSATA1)
udevadm settle
btrfs device scan && mount /data
gone
umount /data
fstab
wipefs -aq "$A" "$B"
btrfs device scan --forget

export LVM_SUPPRESS_FD_WARNINGS=1
pvcreate -qq -y "$A" "$B"
vgcreate -q lab "$A" "$B"
lvcreate -q -y --type striped -i 2 -L 32m -n both lab
quiet "LVM volume group, well"
vgchange -q -an lab
tear_out "$B"
# The group's list of disks is root's, and a group that is not in use has no mapping: without the
# collector nobody sees it.
unset EVERYBODY
state "LVM volume group without a disk, not in use" storage_danger
words "the volume group lab misses"
put_back
B=$(by LABSATA1)
gone
vgremove -qq -f lab
wipefs -aq "$A" "$B"
collects nothing
rm -rf /run/vela-platform /var/lib/vela-platform/seen.json
cp /tmp/fstab /etc/fstab
