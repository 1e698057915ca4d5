# shellcheck shell=bash disable=SC1091
# LUNs of the kernel's iSCSI target, and a disk from it that goes away.
modprobe -a target_core_mod target_core_file target_core_iblock iscsi_target_mod iscsi_tcp
big=$(by LABBIG0) target=/sys/kernel/config/target name=iqn.2000-01.lab.example:luns
group=$target/iscsi/$name/tpgt_1
ln -sf /usr/libexec/vela-systemhealth/velaiscsiep /usr/local/bin/velaiscsiep
mkfs.ext4 -q -m 0 "$big"
mkdir -p /volume1 /mnt/lun
mount "$big" /volume1
lun() { # lun NUMBER [VOLUME]: exports a thin file of the volume
  local file=${2-/volume1}/lun$1.img store=$target/core/fileio_0/lun$1
  truncate -s 64M "$file"
  mkdir -p "$store"
  echo "fd_dev_name=$file,fd_dev_size=67108864" >"$store/control"
  echo "$file" >"$store/udev_path"
  echo 1 >"$store/enable"
  mkdir -p "$group/lun/lun_$1"
  ln -s "$store" "$group/lun/lun_$1/port"
}
no_lun() {
  rm "$group/lun/lun_$1/port"
  rmdir "$group/lun/lun_$1" "$target/core/fileio_0/lun$1"
}
lun 1
mkdir -p $group/np/127.0.0.1:3260
for setting in authentication=0 generate_node_acls=1 demo_mode_write_protect=0 cache_dynamic_acls=1; do
  echo ${setting#*=} >"$group/attrib/${setting%=*}"
done
echo 1 >$group/enable
quiet "LUN on a roomy volume"

# free MIB: what is left of the volume.
free() {
  local available size
  rm -f /volume1/filler
  sync -f /volume1
  read -r available size < <(stat -f -c '%a %S' /volume1)
  fallocate -l $((available * size - $1 * 1048576)) /volume1/filler
  sync -f /volume1
}
low_write() { echo "san.low_capacity_write=\"$1\"" >/etc/velainfo.conf; }
limits() { # limits WHO WHOSE: each limit below that many LUNs
  free 1400
  state "$2 volume below a tenth" "$1_space"
  free 500
  state "$2 volume below the soft limit" "$1_soft_limit"
  low_write yes
  state "$2 volume below the soft limit, written to all the same" "$1_low_write"
  low_write no
  free 100
  state "$2 volume below the hard limit" "$1_hard_limit"
  rm /volume1/filler
  gone
}
limits lun "LUN's"
lun 2
limits luns "two LUNs'"
low_write yes
state "LUNs that may be written to on a full volume" low_write
rm /etc/velainfo.conf
gone
mv /volume1/lun1.img /volume1/elsewhere
state "LUN without its file" lun_crashed
umount -l /volume1
state "LUNs whose volume is not mounted" luns_crashed
mount "$big" /volume1
mv /volume1/elsewhere /volume1/lun1.img
gone
no_lun 2
truncate -s 32M /volume1/lun1.img
state "LUN whose file is shorter than the LUN" lun_crashed
truncate -s 64M /volume1/lun1.img
gone

# What stops its volume stops the LUN: an error below it, its disk offline, its disk torn out.
modprobe dm_mod
D=$(by LABSCSI0) E=$(by LABSCSI1) F=$(by LABSCSI2)
failing_device lab "$D"
mkdir -p /volume2 /volume3 /volume4
number=1
for device in /dev/mapper/lab "$E" "$F"; do
  mkfs.ext4 -q -m 0 "$device" && mount -o errors=remount-ro "$device" "/volume$((number += 1))"
  lun $number "/volume$number"
done
. "$LAB/everybody.sh"
unhealthy() { # unhealthy LUN: the storage is more urgent, but the LUN's own status says so, too
  local said
  said=$("${AS_USER[@]}" velaiscsiep --get_service_status)
  [[ $said == *"\"name\":\"$1\",\"status\":\"Unhealthy\""* ]] || report FAIL "$1" "-> not unhealthy: $said"
}
quiet "LUNs on volumes of their own"
break_device lab
touch /volume2/file
sync -f /volume2
# Only who writes next finds that the journal is gone.
touch /volume2/file
state "volume of a LUN, stopped by I/O errors" storage_danger
unhealthy lun2
no_lun 2
umount /volume2
dmsetup remove lab
gone
echo offline >"/sys/block/$(name_of "$E")/device/state"
state "volume of a LUN, its disk offline" storage_danger
unhealthy lun3
no_lun 3
echo running >"/sys/block/$(name_of "$E")/device/state"
umount /volume3
gone
# A disk that is a LUN by itself, and nothing else.
store=$target/core/iblock_0/disk
mkdir -p "$store" "$group/lun/lun_5"
echo "udev_path=$E" >"$store/control"
echo "$E" >"$store/udev_path"
echo 1 >"$store/enable"
ln -s "$store" "$group/lun/lun_5/port"
quiet "disk that is a LUN"
echo offline >"/sys/block/$(name_of "$E")/device/state"
state "disk that is a LUN, offline" lun_crashed
echo running >"/sys/block/$(name_of "$E")/device/state"
gone
rm "$group/lun/lun_5/port"
rmdir "$group/lun/lun_5" "$store"
tear_out "$F"
state "volume of a LUN, its disk torn out" storage_danger
unhealthy lun4
no_lun 4
umount -l /volume4
put_back
wipefs -aq "$D" "$E" "$(by LABSCSI2)"
gone

unset EVERYBODY
serve
quiet "LUN, asked about by the service"
mv /volume1/lun1.img /volume1/elsewhere
state "LUN without its file, seen by the service" lun_crashed
mv /volume1/elsewhere /volume1/lun1.img
gone
serve_no_more

echo "InitiatorName=iqn.2000-01.lab.example:appliance" >/etc/iscsi/initiatorname.iscsi
pgrep -x iscsid || iscsid
until_is 10 '*:luns' iscsiadm -m discovery -t st -p 127.0.0.1:3260
iscsiadm -m node -T $name -p 127.0.0.1:3260 --login
udevadm settle
find_lun() { lsscsi | awk '/LIO-ORG/ { print $NF; exit }'; }
disk=$(until_is 10 '/dev/*' find_lun)
session() { cat /sys/class/iscsi_session/session*/state; }
disconnect() { echo 0 >$group/enable && until_is 20 FAILED session; }
connect() { echo 1 >$group/enable && until_is 30 LOGGED_IN session; }
mkfs.ext4 -q "$disk" && mount "$disk" /mnt/lun
quiet "iSCSI disk, in use"
disconnect
state "iSCSI disk in use, disconnected" disk_away
connect
gone
umount /mnt/lun
wipefs -aq "$disk"
disconnect
no_finding "iSCSI disk without a use, disconnected"
connect
modprobe raid1
mdadm --create /dev/md1 --run --assume-clean --size=32768 --level=1 --raid-devices=2 --spare-devices=1 \
  "$(by LABSCSI0)" "$(by LABSCSI1)" "$disk"
udevadm settle
disconnect
no_finding "iSCSI disk as a hot spare, disconnected"
connect
mdadm --stop /dev/md1
mdadm --zero-superblock "$(by LABSCSI0)" "$(by LABSCSI1)" "$disk"

iscsiadm -m node -T $name --logout
echo 0 >$group/enable
no_lun 1
rmdir $group/np/* $group $target/iscsi/$name
rm /usr/local/bin/velaiscsiep
umount /volume1
wipefs -aq "$big"
