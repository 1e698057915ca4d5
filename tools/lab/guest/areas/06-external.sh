# shellcheck shell=bash
# Sticks, cards and eSATA disks.
stick=$(by 'LABUSB0-0:0') card=/dev/mmcblk0 A=$(by LABSATA0)
mkdir -p /volumeUSB1/usbshare /volumeSD1/sdshare /volumeSATA1/satashare

echo type=c | sfdisk -q "$stick"
udevadm settle
mkfs.vfat "${stick}1" && mount "${stick}1" /volumeUSB1/usbshare
quiet "USB stick, empty"
leave /volumeUSB1/usbshare 3
state "USB volume nearly full" external_space 'USB {0} 1{1} {2}'
bayless
state "USB volume nearly full, on a model without bays" bayless_external 'USB {0} 1{1} {2}'
with_bays
rm /volumeUSB1/usbshare/filler
gone

mkfs.ext4 -q -m 0 "$card" && mount "$card" /volumeSD1/sdshare
leave /volumeSD1/sdshare 2
state "SD card nearly full" external_space '{0} 1{1} {2}'
rm /volumeSD1/sdshare/filler
gone
umount /volumeSD1/sdshare

# NTFS is a program, which may hang: only the collector asks it.
collects fuseblk
modprobe fuse
mkfs.ntfs -Q -F "$card" && ntfs-3g "$card" /volumeSD1/sdshare
quiet "SD card with NTFS, empty"
leave /volumeSD1/sdshare 2
state "SD card with NTFS, nearly full" external_space '{0} 1{1} {2}'
rm /volumeSD1/sdshare/filler
gone
umount /volumeSD1/sdshare
collects nothing

# The bay is external because the administrator says so.
port=$(readlink -f "/sys/block/$(name_of "$A")" | grep -o '/ata[0-9]*' | tr -dc 0-9)
echo "esata.ports=\"$port\"" >/etc/velainfo.conf
mkfs.ext4 -q -m 0 "$A" && mount "$A" /volumeSATA1/satashare
leave /volumeSATA1/satashare 2
state "eSATA volume nearly full" external_space 'eSATA {0} 1{1} {2}'
umount /volumeSATA1/satashare
rm /etc/velainfo.conf
wipefs -aq "$A"
gone

leave /volumeUSB1/usbshare 3
state "USB volume nearly full, then pulled while mounted" external_space 'USB {0} 1{1} {2}'
qmp device_del id=stick0
until_is 10 '' find "/sys/block/$(name_of "$stick")" -maxdepth 0
gone
quiet "USB stick pulled while mounted"
umount -l /volumeUSB1/usbshare
