# shellcheck shell=bash disable=SC1091
# Device mapper's other kinds: paths, a cache whose disk is torn out, a pool whose metadata fail,
# checksums. The collector reads them.
. "$LAB/everybody.sh"
collects device_mapper expected
export LVM_SUPPRESS_FD_WARNINGS=1
modprobe -a dm_mod dm_cache dm_cache_smq dm_thin_pool dm_integrity
A=$(by LABSATA0) B=$(by LABSATA1) D=$(by LABSCSI0) E=$(by LABSCSI1)
mkdir -p /volume1

# Two disks stand for two paths: the mapping does not look at what is on them.
modprobe -a dm_multipath dm_round_robin
sectors=$(blockdev --getsz "$A")
a=$(cat "/sys/block/$(name_of "$A")/dev") b=$(cat "/sys/block/$(name_of "$B")/dev")
dmsetup create --uuid mpath-lab paths --table "0 $sectors multipath 0 0 2 1 round-robin 0 1 1 $a 1000 round-robin 0 1 1 $b 1000"
blind "multipath, well, and nobody tries its paths"
dmsetup message paths 0 "fail_path $a"
blind "multipath, one of two paths failed"
words "1 of 2 paths to paths has failed."
dmsetup message paths 0 "fail_path $b"
state "multipath, all paths failed" storage_danger
dmsetup message paths 0 "reinstate_path $a"
gone
dmsetup remove paths

# A cache that has written nothing back takes the volume along.
pvcreate -qq -y "$A" "$D"
vgcreate -q lab "$A" "$D"
lvcreate -q -y -L 64m -n slow lab "$A"
lvcreate -q -y --type cache-pool -L 32m -n fast lab "$D"
lvconvert -q -y --type cache --cachemode writeback --cachepool lab/fast lab/slow
mkfs.ext4 -q /dev/lab/slow && mount /dev/lab/slow /volume1
quiet "cache, well"
tear_out "$D"
echo x >/volume1/file
sync -f /volume1
dmsetup status lab-slow
state "cache that writes back, its disk torn out" storage_danger
umount -l /volume1
dmsetup remove_all -f
put_back
D=$(by LABSCSI0)
wipefs -aq "$A" "$D"
gone

# pool METADATA DATA: thin, as LVM would name its parts.
pool() {
  local uuid=LVM-0000000000000000000000000000000000000000000000000000000000000000
  dd if=/dev/zero of="$1" bs=4k count=1 oflag=direct
  failing_device meta "$1"
  dmsetup create --uuid $uuid-tpool lab-pool-tpool \
    --table "0 $(blockdev --getsz "$2") thin-pool /dev/mapper/meta $2 128 0"
  dmsetup message lab-pool-tpool 0 "create_thin 0"
  dmsetup create --uuid $uuid thin --table "0 131072 thin /dev/mapper/lab-pool-tpool 0"
}
pool "$D" "$B"
dd if=/dev/urandom of=/dev/mapper/thin bs=1M count=1 oflag=direct
quiet "thin pool, well"
break_device meta
dd if=/dev/urandom of=/dev/mapper/thin bs=1M seek=1 count=4 conv=fsync
dmsetup status lab-pool-tpool
state "thin pool whose metadata failed" storage_danger
dmsetup remove thin
dmsetup remove lab-pool-tpool
dmsetup remove meta
wipefs -aq "$D"
gone

# Sizes are as the kernel chose them when it first saw the disk, empty. What was never written has
# no checksum, and udev looks at it: so all is written, and the count begins anew.
dd if=/dev/zero of="$E" bs=4k count=1 oflag=direct
dmsetup create small --table "0 32768 linear $E 0"
sums() { echo "0 $1 integrity /dev/mapper/small 0 - J 1 internal_hash:crc32c"; }
dmsetup create format --table "$(sums 1)"
dmsetup remove format
sectors=$(od -A n -t u8 -j 16 -N 8 /dev/mapper/small | tr -d ' ')
dmsetup create --uuid CRYPT-INTEGRITY-lab sums --table "$(sums "$sectors")"
dd if=/dev/zero of=/dev/mapper/sums bs=64k oflag=direct
udevadm settle
reload_device sums "$(sums "$sectors")"
udevadm settle
dmsetup status sums
quiet "checksums, all right"
dmsetup suspend sums && dmsetup resume sums
dd if=/dev/urandom of="$E" bs=4k seek=2048 count=8 oflag=direct
dd if=/dev/mapper/sums of=/dev/null bs=4k iflag=direct
dmsetup status sums
state "checksums that do not match" storage_warning
dmsetup remove sums
dmsetup remove small
dd if=/dev/zero of="$E" bs=4k count=1 oflag=direct
gone
