# shellcheck shell=bash disable=SC1091
# A machine with something for each watcher, and each watcher in turn killed, uninstalled or
# forbidden: nobody is then told plain "Healthy", neither root nor the service's user.
. "$LAB/everybody.sh"
# unwatched NAME WORDS [root|service]: who does not see is named; to both, unless only one is.
unwatched() {
  local who
  for who in ${3-root service}; do
    # A collector that a busy host holds up says that, and not what it would have seen.
    if names_it "$who" "$2" || names_it "$who" "$2" || names_it "$who" "$2"; then
      report ok "$1, said to $who" "-> $2"
    else
      report FAIL "$1, said to $who" "-> exit status $STATUS, and not \"$2\": ${SAID[*]}"
    fi
  done
}
names_it() { # names_it root|service WORDS
  local all as=()
  if [ "$1" = service ]; then
    as=("${AS_USER[@]}")
  elif [ -n "${COLLECTS-}" ]; then
    systemctl start vela-platform-collect
  fi
  all=$("${as[@]}" vela-health 2>&1)
  STATUS=$?
  read -r -d '' -a SAID <<<"$all" || true
  [[ $STATUS = 3 && ${SAID[*]} == *"$2"* ]]
}
away() { for file; do mv "$file" "$file.away"; done; }
back() { for file; do mv "$file.away" "$file"; done; }

# A disk that smartd takes for a real one, on two paths.
modprobe scsi_debug dev_size_mb=16 add_host=2 vpd_use_hostno=0
DISK=$(until_is 10 '/sys/*' grep -l scsi_debug /sys/block/sd*/device/model)
DISK=${DISK#/sys/block/} DISK=/dev/${DISK%%/*}
smartctl -s on "$DISK"
echo "$DISK -H" >/tmp/smartd.conf
watch() { # watch: a new smartd, until it has written its state
  rm -f /var/lib/smartmontools/smartd.*
  smartd -n -i 60 -c /tmp/smartd.conf &
  SMARTD=$!
  until_is 60 '*smartd*' find /var/lib/smartmontools -name 'smartd.Linux-scsi_debug-*.state'
}
watch
# A UPS, a controller, a web server.
conf=/etc/nut
echo MODE=standalone >$conf/nut.conf
rm -f $conf/upsmon.conf
printf '[ups]\n driver = dummy-ups\n port = ups.dev\n mode = dummy-once\n' >$conf/ups.conf
printf 'ups.status: OL\n' >$conf/ups.dev
printf 'LISTEN 127.0.0.1 3493\nMAXAGE 5\n' >$conf/upsd.conf
chgrp nut $conf/* && chmod 640 $conf/*
mkdir -p /run/nut /var/log/nginx /var/lib/nginx && chown nut:nut /run/nut
upsdrvctl start && upsd
plug_in_controller
systemctl start nginx
until_is 20 OL upsc ups@127.0.0.1 ups.status
collects smart device_mapper nut ipmi web_server
quiet "each watcher is at work"

kill -KILL "$SMARTD" && wait "$SMARTD"
unwatched "smartd killed" "smartd does not run"
away /usr/sbin/smartd
unwatched "smartd uninstalled" "smartd is not installed"
back /usr/sbin/smartd
watch

# The kernel's mapping as the daemon would have made it; Debian's appliances seldom have the daemon.
modprobe -a dm_multipath dm_round_robin
paths=$(lsblk -dno MAJ:MIN,MODEL | awk '/scsi_debug/ { printf " %s 100", $1 }')
dmsetup create mpatha --uuid mpath-lab \
  --table "0 $(blockdev --getsz "$DISK") multipath 0 0 1 1 round-robin 0 2 1$paths"
unwatched "multipathd uninstalled" "multipathd does not run"
dmsetup remove mpatha

kill -KILL "$(cat /run/nut/dummy-ups-ups.pid)"
until_is 15 '' upsc ups@127.0.0.1 ups.status
unwatched "UPS driver killed" "DRIVER-NOT-CONNECTED"
kill -KILL "$(cat /run/nut/upsd.pid)"
unwatched "UPS server killed" "upsd at "
library=$(find /usr/lib -name 'libupsclient.so.*' -type l)
away "$library"
unwatched "NUT's library uninstalled" "cannot be loaded"
back "$library"
away /etc/nut
quiet "NUT purged, and there is no UPS for all that is known"
back /etc/nut
upsdrvctl start && upsd
until_is 20 OL upsc ups@127.0.0.1 ups.status
quiet "smartd and NUT back at work"

collects nothing
chmod 600 /run/vela-platform/smart.json
unwatched "the collector's snapshot of the disks forbidden" "could not be read: Permission denied" service
chmod 700 /run/vela-platform
unwatched "all snapshots forbidden" "could not be read: Permission denied" service
chmod 755 /run/vela-platform
sed -i -E 's/"written":[0-9]+/"written":'$((EPOCHSECONDS - 86400))/ /run/vela-platform/*.json
unwatched "snapshots a day old" "vela-platform-collect is stuck or off"
rm -rf /run/vela-platform
unwatched "collector off" "vela-platform-collect, which does so, does not run"
away "$(command -v vela-platform-collect)"
unwatched "collector uninstalled" "vela-platform-collect, which does so, does not run"
back /usr/sbin/vela-platform-collect
collects smart device_mapper nut ipmi web_server

systemctl kill -s KILL nginx
until_is 10 failed systemctl is-active nginx
unwatched "web server killed" "nginx.service has failed, though its configuration passes"
systemctl restart nginx
systemctl stop nginx
away /usr/sbin/nginx
unwatched "web server uninstalled, its configuration kept" "nginx.service is enabled, and /usr/sbin/nginx is missing"
wants=/etc/systemd/system/multi-user.target.wants
away $wants/nginx.service
quiet "web server purged"
back /usr/sbin/nginx $wants/nginx.service
systemctl start nginx
collects nothing
systemctl stop dbus.socket dbus.service
unwatched "D-Bus killed" "systemd could not be asked over the system bus" service
unwatched "D-Bus killed" "systemd" root
systemctl start dbus.socket
until_is 10 active systemctl is-active dbus.socket
collects smart device_mapper nut ipmi web_server

systemctl enable corosync pacemaker
unwatched "cluster enabled and killed" "pacemaker.service is enabled and not active"
away /usr/sbin/crm_mon /lib/systemd/system/{corosync,pacemaker}.service
unwatched "cluster uninstalled, its configuration kept" "pacemaker.service is enabled and not active"
back /usr/sbin/crm_mon /lib/systemd/system/{corosync,pacemaker}.service
systemctl disable corosync pacemaker
quiet "cluster disabled, all others at work"

systemctl stop nginx
kill "$(cat /run/nut/upsd.pid)"
upsdrvctl stop
rm $conf/{nut,ups,upsd}.conf $conf/ups.dev
echo MODE=none >$conf/nut.conf
chgrp nut $conf/* && chmod 640 $conf/*
kill "$SMARTD" && wait "$SMARTD"
rm -rf /var/lib/smartmontools/smartd.*
udevadm settle
rmmod scsi_debug
unplug_controller
collects nothing
rm -rf /run/vela-platform
