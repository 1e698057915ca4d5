# shellcheck shell=bash
# A UPS, by NUT's own driver for tests behind its real server.
conf=/etc/nut
echo MODE=standalone >$conf/nut.conf
printf '[ups]\n driver = dummy-ups\n port = lab.dev\n mode = dummy-once\n' >$conf/ups.conf
printf 'LISTEN 127.0.0.1 3493\nMAXAGE 5\n' >$conf/upsd.conf
printf '[admin]\n password = lab\n actions = SET\n' >$conf/upsd.users
printf 'ups.status: OL\nbattery.charge: 100\nups.alarm: \n' >$conf/lab.dev
chgrp nut $conf/* && chmod 640 $conf/*
mkdir -p /run/nut && chown nut:nut /run/nut
status() { upsc ups@127.0.0.1 ups.status; }
set_status() {
  upsrw -s "ups.status=$1" -u admin -p lab ups@127.0.0.1
  until_is 15 "$1" status
}
upsdrvctl start && upsd
until_is 20 OL status

quiet "UPS on mains"
set_status "OB DISCHRG"
state "UPS on battery" ups_battery
set_status "OB DISCHRG LB"
state "UPS, battery low" ups_low
set_status "FSD OB LB"
state "UPS, about to switch off" ups_low
set_status "OL CHRG"
gone
set_status "OL LB"
quiet "UPS driver that says low battery on mains"
set_status "OL CHRG LB RB"
quiet "UPS charging, battery to be replaced"

set_status "OB DISCHRG"
state "UPS on battery, then its driver dies" ups_battery
kill "$(cat /run/nut/dummy-ups-ups.pid)"
until_is 15 '' status
gone
kill "$(cat /run/nut/upsd.pid)"
no_finding "UPS server gone"
echo MODE=none >$conf/nut.conf
quiet "no UPS"
