# shellcheck shell=bash
# As the package runs it: the health service as a user without rights, and the collector, which has
# some, leaving snapshots for it.
serve
quiet "health service under its unit"
collects all
plug_in_controller
put() { printf '%s\n' "$@" >/own/bmc.state; }
put
quiet "health service and collector, all well"
put "0x11 0x03"
state "supply failed, seen by the collector and said by the service" supply '{0}2{1} {2}'
put
gone

F=$(by LABSCSI2) G=$(by LABSCSI3)
modprobe -a dm_mod dm_raid raid1
pvcreate -qq -y "$F" "$G"
vgcreate -q lab "$F" "$G"
lvcreate -q -y --type raid1 -m1 --nosync -L 32m -n mirror lab
mkdir -p /volume1
mkfs.ext4 -q -m 0 /dev/lab/mirror && mount /dev/lab/mirror /volume1
chmod 700 /volume1
quiet "volume that the service may not enter"
leave /volume1 3
state "such a volume, nearly full" volume_space '{0} 1{1} {2}'
rm /volume1/filler
gone
tear_out "$G"
dd if=/dev/zero of=/volume1/file bs=1M count=4 conv=fsync
state "LVM mirror without a disk, seen by the collector and said by the service" storage_warning
umount /volume1
lvremove -qq -f lab
vgremove -qq -f lab
dmsetup remove_all -f
put_back
wipefs -aq "$F" "$(by LABSCSI3)"
gone

systemctl start vela-platform-collect.timer
until_is 5 active systemctl is-active vela-platform-collect.timer
systemctl stop vela-platform-collect.timer
serve_no_more
unplug_controller
