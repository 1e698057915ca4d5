# shellcheck shell=bash disable=SC1091
# The only disk beneath a mapping is torn out; a path, a cache, a pool's metadata fail; checksums.
export LVM_SUPPRESS_FD_WARNINGS=1
modprobe -a dm_mod dm_crypt
. "$LAB/everybody.sh"
A=$(by LABSATA0) B=$(by LABSATA1) C=$(by LABSATA2) D=$(by LABSCSI0) E=$(by LABSCSI1) F=$(by LABSCSI2)
mkdir -p /volume{1,2,3,4} /media/disk

# A disk of the machine that somebody mounted where desktops mount sticks.
mkfs.ext4 -q -F -m 0 "$C" && mount "$C" /media/disk
leave /media/disk 3
state "disk of the machine below /media, nearly full" volume_space '{0} 2{1} {2}'
umount /media/disk
wipefs -aq "$C"
gone

pvcreate -qq -y "$A" "$B" "$D"
vgcreate -q one "$D"
vgcreate -q two "$A" "$B"
lvcreate -q -y -l 100%FREE -n linear one
lvcreate -q -y --type striped -i 2 -L 64m -n striped two
dmsetup create --uuid CRYPT-LUKS2-00000000-luks luks --table "0 $(blockdev --getsz "$E") crypt cipher_null-ecb - 0 $E 0"
failing_device plain "$F"
number=0
for device in one-linear two-striped luks plain; do
  mkfs.ext4 -q "/dev/mapper/$device" && mount "/dev/mapper/$device" "/volume$((number += 1))"
done
collects expected
quiet "LVM, striped, LUKS and plain mappings"
collects nothing
rm -rf /run/vela-platform

# torn DISK VOLUME WHAT COMMAND...: the command gives back what was there.
torn() {
  local disk=$1 volume=$2 what=$3
  shift 3
  tear_out "$disk"
  state "$what, its disk torn out" storage_danger
  umount -l "$volume"
  "$@"
  put_back
  gone
}
torn "$F" /volume4 "plain mapping" dmsetup remove plain
torn "$E" /volume3 "LUKS mapping" dmsetup remove luks
torn "$B" /volume2 "striped LVM volume" dmsetup remove two-striped
torn "$D" /volume1 "linear LVM volume" dmsetup remove one-linear
B=$(by LABSATA1) D=$(by LABSCSI0) E=$(by LABSCSI1) F=$(by LABSCSI2)
vgremove -qq -f one two
wipefs -aq "$A" "$B" "$D" "$E" "$F"
gone
