# shellcheck shell=bash
# Disks that fail by themselves, and one in a bay that says that it can be taken out.
F=$(by LABSCSI2) G=$(by LABSCSI3)
mkdir -p /volume1

echo offline >"/sys/block/$(name_of "$F")/device/state"
quiet "disk without a use, offline"
echo running >"/sys/block/$(name_of "$F")/device/state"
mkfs.ext4 -q "$F" && mount "$F" /volume1
echo offline >"/sys/block/$(name_of "$F")/device/state"
state "only disk of a volume, offline" storage_danger
echo running >"/sys/block/$(name_of "$F")/device/state"
# What it refused to write is an error of the file system, too, until that is mounted anew.
umount /volume1
gone
wipefs -aq "$F"

until_is 1 1 cat "/sys/block/$(name_of "$G")/removable"
mkfs.ext4 -q -m 0 "$G" && mount "$G" /volume1
leave /volume1 3
state "volume in a bay of removable disks, nearly full" volume_space '{0} 1{1} {2}'
umount /volume1
gone
wipefs -aq "$G"

# The daemon's look at all disks, once, with Debian's own hook around ours.
ln -s /usr/libexec/vela-systemhealth/smartd-record /etc/smartmontools/run.d/
printf '%s -H -m root -M exec /usr/share/smartmontools/smartd-runner\n' /dev/nvme0 "$(by LABSATA0)" >/tmp/smartd.conf
smartd -q onecheck -c /tmp/smartd.conf
quiet "disks that smartd finds well"
qmp qom-set path=/machine/peripheral/nvme property=smart_critical_warning value=4
smartd -q onecheck -c /tmp/smartd.conf
state "NVMe disk that smartd finds failing" storage_warning
qmp qom-set path=/machine/peripheral/nvme property=smart_critical_warning value=0
rm /var/lib/vela-platform/smart/LABNVME0 /etc/smartmontools/run.d/smartd-record
gone
