# shellcheck shell=bash
# What an answer never does: wait for a dead server, ask a disk for anything, change anything.
A=$(by LABSATA0) D=$(by LABSCSI0) E=$(by LABSCSI1)
modprobe -a nfs nfsd raid1
milliseconds() { # milliseconds COMMAND...
  local began=${EPOCHREALTIME/./}
  "$@" >/dev/null
  echo $(((${EPOCHREALTIME/./} - began) / 1000))
}

# An ext4 mounted below a network mount whose server has died: whoever asks for its path hangs.
mkdir -p /srv/inner /mnt/nfs
echo '/srv 127.0.0.1(rw,fsid=0,no_root_squash,no_subtree_check,insecure)' >/etc/exports
mount -t nfsd nfsd /proc/fs/nfsd
echo 1 >/proc/fs/nfsd/nfsv4gracetime
exportfs -a
rpc.mountd -N 3
serve_files() { rpc.nfsd -N 3 -G 1 1; }
serve_files
mount -t nfs4 -o noac,lookupcache=none 127.0.0.1:/ /mnt/nfs
mkfs.ext4 -q "$A" && mount "$A" /mnt/nfs/inner
no_finding "ext4 below a network mount"
usual=$(milliseconds vela-health --json)
rpc.nfsd 0
timeout 3 stat /mnt/nfs/inner && report FAIL "dead server" "-> still answers"
no_finding "ext4 below a dead network mount"
late=$(milliseconds vela-health --json)
if [ $((late - usual)) -lt 2000 ]; then
  report ok "answer beside a dead network mount" "-> $late ms, usually $usual ms"
else
  report FAIL "answer beside a dead network mount" "-> $late ms, usually $usual ms"
fi
serve_files
timeout 60 umount -l /mnt/nfs
until_is 60 '' grep -w inner /proc/mounts
rpc.nfsd 0
pkill -x rpc.mountd
exportfs -ua
umount /proc/fs/nfsd
wipefs -aq "$A"

# Eight internal disks and more, some in use.
mdadm --create /dev/md1 --run --assume-clean --metadata=1.2 --level=1 --raid-devices=2 "$D" "$E"
# Nor may the kernel read by itself, as it does within seconds of a mount.
mkfs.ext4 -q -E lazy_itable_init=0,lazy_journal_init=0 /dev/md1 && mkdir -p /volume1
mount -o no_prefetch_block_bitmaps /dev/md1 /volume1
sync
quiet "array and volume in use"
never() { # never NAME FORBIDDEN ALLOWED: what the trace must not have
  local found
  found=$(grep -E "$2" /run/strace | grep -vE "$3" | head -n 1)
  if [ -z "$found" ]; then
    report ok "$1" "-> never, in $(wc -l </run/strace) such calls"
  else
    report FAIL "$1" "-> $found"
  fi
}
strace -f -qq -o /run/strace -e trace=%file,ioctl,ftruncate,fallocate,fchmod,fchown,/sync vela-health --json
never "opening a device" '"/dev/' '"/dev/(null|urandom)"'
never "opening a file to write to it" 'O_WRONLY|O_RDWR|O_CREAT|O_TRUNC|O_APPEND' '"/dev/null"'
never "a command to a device" '\bioctl\(' 'TCGETS|FIONREAD'
never "changing a folder or a file" '\b(mkdir|unlink|rename|link|symlink|mknod|chmod|chown|utime|truncate|ftruncate|fallocate|setxattr|f?sync|fdatasync)[a-z0-9]*\(' '^$'
calls=$(wc -l </run/strace)
if [ "$calls" -lt 1500 ]; then
  report ok "reading the same again and again" "-> no: $calls such calls in all, though traced and slow"
else
  report FAIL "reading the same again and again" "-> $calls such calls in one answer"
fi
rm /run/strace

# The kernel's own count of the commands that each disk was given. It polls trays by itself, and the
# system's disk is everybody's.
echo 0 >/sys/module/block/parameters/events_dfl_poll_msecs
commands() { head -n 1 /sys/block/sd*/device/iorequest_cnt /sys/block/[!v]*/stat; }
before=$(commands)
for _ in 1 2 3 4 5 6 7 8 9 10; do vela-health --json >/dev/null; done
if [ "$before" = "$(commands)" ]; then
  report ok "asking a disk for anything" "-> never, in 10 answers"
else
  report FAIL "asking a disk for anything" "-> $(diff <(echo "$before") <(commands) | tr '\n' ' ')"
fi
echo 2000 >/sys/module/block/parameters/events_dfl_poll_msecs
umount /volume1
mdadm --stop /dev/md1
mdadm --zero-superblock "$D" "$E"
