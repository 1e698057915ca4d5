# shellcheck shell=bash
# LVM: a mirror without a disk, a thin pool without room. The collector reads device mapper.
collects device_mapper
export LVM_SUPPRESS_FD_WARNINGS=1
modprobe -a dm_mod dm_raid dm_thin_pool
A=$(by LABSATA0) B=$(by LABSATA1)

pvcreate -qq -y "$A" "$B"
vgcreate -q lab "$A" "$B"
lvcreate -q -y --type raid1 -m1 --nosync -L 32m -n mirror lab
quiet "LVM mirror, well"
tear_out "$B"
dd if=/dev/zero of=/dev/lab/mirror bs=1M count=4 oflag=direct
state "LVM mirror, disk lost" storage_warning
lvremove -qq -f lab
vgremove -qq -f lab
dmsetup remove_all -f
put_back
B=$(by LABSATA1)
wipefs -aq "$A" "$B"
gone

pvcreate -qq -y "$A"
vgcreate -q lab "$A"
lvcreate -q -y -L 24m -T lab/pool
lvcreate -q -y -V 100m -T lab/pool -n thin
dd if=/dev/urandom of=/dev/lab/thin bs=1M count=20 conv=fsync
quiet "thin pool, with room"
dd if=/dev/urandom of=/dev/lab/thin bs=1M seek=20 count=3 conv=fsync
state "thin pool, nearly full" storage_warning
dd if=/dev/urandom of=/dev/lab/thin bs=1M seek=23 count=4 oflag=direct &
until_is 10 '*out_of_data_space*' dmsetup status lab-pool-tpool
state "thin pool, full" storage_danger
lvextend -q -L +16m lab/pool
wait
lvremove -qq -f lab
vgremove -qq lab
wipefs -aq "$A"
gone
