# shellcheck shell=bash
# Disks that fail by themselves.
F=$(by LABSCSI2)
mkdir -p /volume1
mkfs.ext4 -q "$F" && mount "$F" /volume1
echo offline >"/sys/block/$(name_of "$F")/device/state"
state "disk of a volume, offline" storage_warning
echo running >"/sys/block/$(name_of "$F")/device/state"
# What it refused to write is an error of the file system, too, until that is mounted anew.
umount /volume1
gone
wipefs -aq "$F"
