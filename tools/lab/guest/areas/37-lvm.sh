# shellcheck shell=bash disable=SC1091
# LVM: a mirror without a disk, a thin pool without room. The collector reads device mapper.
. "$LAB/everybody.sh"
collects device_mapper expected
export LVM_SUPPRESS_FD_WARNINGS=1
modprobe -a dm_mod dm_raid dm_thin_pool
A=$(by LABSATA0) B=$(by LABSATA1) C=$(by LABSATA2)

pvcreate -qq -y "$A" "$B"
vgcreate -q lab "$A" "$B"
lvcreate -q -y --type raid1 -m1 --nosync -L 32m -n mirror lab
quiet "LVM mirror, well"
tear_out "$B"
dd if=/dev/zero of=/dev/lab/mirror bs=1M count=16 oflag=direct
state "LVM mirror, disk lost" storage_warning
put_back
B=$(by LABSATA1)
vgextend -q --restoremissing lab "$B"
echo 200 >/proc/sys/dev/raid/speed_limit_min
echo 200 >/proc/sys/dev/raid/speed_limit_max
lvchange -q --refresh lab/mirror
lvchange -q --refresh lab/mirror # the parts first, then what is made of them
until_is 10 '*recover*' dmsetup status lab-mirror
state "LVM mirror, recovering" storage_warning
echo 200000 >/proc/sys/dev/raid/speed_limit_max
echo 1000 >/proc/sys/dev/raid/speed_limit_min
until_is 30 '*idle*' dmsetup status lab-mirror
gone
tear_out "$B"
dd if=/dev/zero of=/dev/lab/mirror bs=1M count=16 oflag=direct
state "LVM mirror, disk lost for good" storage_warning
as_told lab-mirror "/dev/NEW-DISK=$C"
gone
put_back
B=$(by LABSATA1)
lvremove -qq -f lab
vgremove -qq -f lab
wipefs -aq "$A" "$B" "$C"

pvcreate -qq -y "$A"
vgcreate -q lab "$A"
lvcreate -q -y -L 24m -T lab/pool
lvcreate -q -y -V 100m -T lab/pool -n thin
dd if=/dev/urandom of=/dev/lab/thin bs=1M count=20 conv=fsync
quiet "thin pool, with room"
dd if=/dev/urandom of=/dev/lab/thin bs=1M seek=20 count=3 conv=fsync
state "thin pool, nearly full" storage_warning
as_told lab-pool +SIZE=+4m
gone
dd if=/dev/urandom of=/dev/lab/thin bs=1M seek=23 count=3 conv=fsync
dd if=/dev/urandom of=/dev/lab/thin bs=1M seek=26 count=5 oflag=direct &
until_is 10 '*out_of_data_space*' dmsetup status lab-pool-tpool
state "thin pool, full" storage_danger
as_told lab-pool +SIZE=+16m
wait
gone
lvremove -qq -f lab
vgremove -qq lab
wipefs -aq "$A"
gone

pvcreate -qq -y "$A" "$B"
vgcreate -q lab "$A" "$B"
lvcreate -q -y --type linear -L 32m -n one lab "$A"
lvcreate -q -y -s -L 4m -n old lab/one
dd if=/dev/urandom of=/dev/lab/one bs=1M count=8 oflag=direct
dmsetup status lab-old
quiet "LVM snapshot that ran full"
lvremove -qq -f lab/old
lvcreate -q -y --type striped -i 2 -L 32m -n both lab
vgchange -q -an lab
tear_out "$B"
vgchange -q -ay --activationmode partial lab
state "LVM volume put together without a disk" storage_danger
vgchange -q -an lab
put_back
B=$(by LABSATA1)
vgreduce -qq --removemissing --force lab || true
vgremove -qq -f lab || true
dmsetup remove_all -f
wipefs -aq "$A" "$B"
gone
