# shellcheck shell=bash disable=SC1091,SC2154
# Software RAID with parity: the first build, degraded, rebuilding, failed.
. "$LAB/md.sh"

# Its first build is a rebuild of the last disk: only the collector can tell the two apart.
collects md
echo 500 >/proc/sys/dev/raid/speed_limit_max
build_array md5 5 --raid-devices=3 "$A" "$B" "$C"
until_is 5 recover of md5 sync_action
quiet "md raid5, first build"
collects nothing
rm -rf /run/vela-platform
state "md raid5, first build, without the collector" storage_warning
whole md5
gone
collects md
quiet "md raid5, built"
mdadm /dev/md5 --fail "$C"
state "md raid5, degraded" storage_warning
put_in md5 "$C"
state "md raid5, rebuilding" storage_warning
whole md5
gone
collects nothing
mdadm /dev/md5 --fail "$A"
mdadm /dev/md5 --fail "$B"
state "md raid5, failed" storage_danger
scrap md5 "$A" "$B" "$C"
gone

build_array md6 6 --raid-devices=4 "$D" "$E" "$F" "$G"
until_is 5 resync of md6 sync_action
quiet "md raid6, initialising"
scrap md6 "$D" "$E" "$F" "$G"
echo 200000 >/proc/sys/dev/raid/speed_limit_max
make md6 6 "$D" "$E" "$F" "$G"
mdadm /dev/md6 --fail "$D"
state "md raid6, one member failed" storage_warning
mdadm /dev/md6 --fail "$E"
state "md raid6, two members failed" storage_warning
put_in md6 "$D"
state "md raid6, rebuilding" storage_warning
whole md6
put_in md6 "$E"
whole md6
gone
mdadm /dev/md6 --fail "$D"
mdadm /dev/md6 --fail "$E"
mdadm /dev/md6 --fail "$F"
state "md raid6, failed" storage_danger
scrap md6 "$D" "$E" "$F" "$G"
gone

make md5 5 "$A" "$B" "$C"
mdadm /dev/md5 --add "$D"
quiet "md raid5, with a hot spare"
mdadm /dev/md5 --fail "$D"
state "md raid5, its hot spare failed" storage_warning
mdadm /dev/md5 --remove "$D"
gone
mdadm --stop /dev/md5
mdadm --incremental "$A"
state "md raid5, one of three found" storage_danger
mdadm --stop --scan
mdadm --zero-superblock "$A" "$B" "$C" "$D"
gone

build_array md5 5 --raid-devices=3 --write-journal "$D" "$A" "$B" "$C"
whole md5
quiet "md raid5 with a journal, well"
mdadm /dev/md5 --fail "$D"
state "md raid5, its journal failed" storage_danger
mdadm /dev/md5 --remove "$D"
state "md raid5, its journal taken out" storage_danger
scrap md5 "$A" "$B" "$C" "$D"
gone

collects md
build_array md5 5 --assume-clean --raid-devices=3 "$A" "$B" missing
quiet "md raid5, made with one missing"
scrap md5 "$A" "$B"
