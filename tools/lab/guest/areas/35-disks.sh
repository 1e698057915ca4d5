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

# The daemon over all disks, with Debian's own hook around ours. QEMU's disks are virtual, which
# need no watching; the kernel's own test disk is taken for a real one.
NVME=/var/lib/vela-platform/smart/LABNVME0
watch() { # watch: a new smartd, until it has written its states
  rm -f /var/lib/smartmontools/smartd.* /var/lib/smartmontools/attrlog.*
  smartd -n -i 10 -c /tmp/smartd.conf &
  SMARTD=$!
  until_is 60 '*smartd*' find /var/lib/smartmontools -name 'smartd.Linux-scsi_debug-*.state'
}
watch_no_more() { kill "$SMARTD" && wait "$SMARTD"; }
unwatched() { # unwatched NAME WORDS: no alarm, no green, and the words why
  local said
  no_alarm "$1" 3
  said=$(vela-health 2>&1)
  [[ $said == *"$2"* ]] || report FAIL "$1, in words" "-> does not say \"$2\": ${said//$'\n'/ | }"
}
no_alarm "virtual disks, and no smartd" 0
id vela-health || useradd --system --user-group --no-create-home --home-dir /nonexistent vela-health
ln -s /usr/libexec/vela-systemhealth/smartd-record /etc/smartmontools/run.d/
modprobe scsi_debug dev_size_mb=16
TEST_DISK=$(until_is 10 '/sys/*' grep -l scsi_debug /sys/block/sd*/device/model)
TEST_DISK=${TEST_DISK#/sys/block/} TEST_DISK=/dev/${TEST_DISK%%/*}
smartctl -s on "$TEST_DISK"
printf '%s -H -m root -M exec /usr/share/smartmontools/smartd-runner\n' /dev/nvme0 "$(by LABSATA0)" "$TEST_DISK" >/tmp/smartd.conf
unwatched "real disk, before the collector's first round" "what smartd knows of"
collects smart nut
unwatched "real disk, smartd does not run" "smartd does not run"
watch
quiet "disks that smartd watches"
asks runuser -u vela-health -- vela-health --json
quiet "disks that smartd watches, as the service's user"
asks vela-health --json
qmp qom-set path=/machine/peripheral/nvme property=smart_critical_warning value=4
until_is 60 '*0x04' cat "$NVME"
quiet "NVMe disk past its rated writes"
watch_no_more
rm "$NVME"
qmp qom-set path=/machine/peripheral/nvme property=smart_critical_warning value=2
watch
until_is 60 '*0x02' cat "$NVME"
quiet "NVMe disk that is hot"
watch_no_more
rm "$NVME"
qmp qom-set path=/machine/peripheral/nvme property=smart_critical_warning value=1
watch
until_is 60 '*0x01' cat "$NVME"
state "NVMe disk with too little spare" storage_warning
qmp qom-set path=/machine/peripheral/nvme property=smart_critical_warning value=0
watch_no_more
rm "$NVME"
watch
gone
echo "Health 1" >/var/lib/vela-platform/smart/GONE
quiet "record of a disk that is not there"
rm /var/lib/vela-platform/smart/GONE
watch_no_more
asks runuser -u vela-health -- vela-health --json
unwatched "real disk, smartd was ended, as the service's user" "smartd does not run"
asks vela-health --json
collects nothing
sed -i -E 's/"written":[0-9]+/"written":'"$(($(date +%s) - 86400))/" /run/vela-platform/smart.json
unwatched "real disk, the collector's snapshot a day old" "s old: vela-platform-collect is stuck or off"
rmmod scsi_debug
rm -rf /run/vela-platform /etc/smartmontools/run.d/smartd-record /var/lib/smartmontools/smartd.*
quiet "virtual disks, after all that"
