# shellcheck shell=bash
# A healthy machine, and what looks like trouble to the unwary: mains off in the ACPI tables with
# the battery at 6 %, a thermal zone past its hot trip point, a cluster's module without a cluster.
quiet "freshly booted"

# A live CD: the root is a read-only, full image with memory above it.
mkdir -p /mnt/{cd,above,live}
mksquashfs /etc/hostname /tmp/cd.squashfs -quiet -no-progress
mount -o loop,ro /tmp/cd.squashfs /mnt/cd
mount -t tmpfs above /mnt/above
mkdir /mnt/above/{upper,work}
mount -t overlay -o lowerdir=/mnt/cd:/,upperdir=/mnt/above/upper,workdir=/mnt/above/work live /mnt/live
# As slaves: what is taken off there stays here, terminals before all.
for folder in dev proc run sys; do mount --rbind --make-rslave /$folder /mnt/live/$folder; done
mkdir -p /mnt/live/run/live/medium
mount --bind /mnt/cd /mnt/live/run/live/medium
asks chroot /mnt/live vela-health --json
quiet "live CD"
asks vela-health --json
umount -R /mnt/live
umount /mnt/above /mnt/cd

# A snap, an image: always full, never written to.
mkdir -p /tmp/tree /snap/core/1 /mnt/iso
head -c 3000000 /dev/urandom >/tmp/tree/file
mksquashfs /tmp/tree /tmp/core.snap -quiet -no-progress
mount -o loop,ro /tmp/core.snap /snap/core/1
quiet "snap-like mount, full"
mke2fs -q -t ext4 -d /tmp/tree /tmp/full.img 5M
mount -o loop /tmp/full.img /mnt/iso
leave /mnt/iso 1
quiet "loop mount, full"
umount /mnt/iso
mount -o loop,ro /tmp/full.img /mnt/iso
quiet "read-only mount, full"
umount /mnt/iso /snap/core/1
rm -rf /tmp/tree /tmp/*.img /tmp/core.snap

# eMMC's sibling, the card reader, without a card; a stick's tray without a medium.
stick=$(by 'LABUSB1-0:0')
qmp eject id=stick1 force=true
until_is 5 0 cat "/sys/block/$(name_of "$stick")/size"
quiet "card reader without a card"

qmp set_link name=nic0 up=false
ip link set "$(basename "$(dirname "$(find /sys/class/net/*/device | head -n 1)")")" up
quiet "network cable pulled"
qmp set_link name=nic0 up=true
