# shellcheck shell=bash
# A UPS, by NUT's own driver for tests behind its real server.
conf=/etc/nut
echo MODE=standalone >$conf/nut.conf
for ups in ups desk; do
  printf '[%s]\n driver = dummy-ups\n port = %s.dev\n mode = dummy-once\n' $ups $ups
  printf 'ups.status: OL\nbattery.charge: 100\nups.alarm: \n' >$conf/$ups.dev
done >$conf/ups.conf
printf 'LISTEN 127.0.0.1 3493\nMAXAGE 5\n' >$conf/upsd.conf
printf '[admin]\n password = lab\n actions = SET\n' >$conf/upsd.users
chgrp nut $conf/* && chmod 640 $conf/*
mkdir -p /run/nut && chown nut:nut /run/nut
server=127.0.0.1
status() { upsc "${1:-ups}@$server" ups.status; }
set_status() { # set_status WORDS [UPS]
  upsrw -s "ups.status=$1" -u admin -p lab "${2:-ups}@$server"
  until_is 15 "$1" status "${2:-ups}"
}
upsdrvctl start && upsd
until_is 20 OL status
until_is 20 OL status desk

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
blind "UPS driver gone"
set_status "OB DISCHRG" desk
state "second UPS on battery, and nobody hears of the first" ups_battery
set_status "OL" desk
gone
upsdrvctl start ups
until_is 20 OL status
set_status "OB DISCHRG" desk
state "second UPS on battery" ups_battery
set_status "OL BYPASS" desk
gone
for words in OFF "OL OFF" "OL OVER" "OL BYPASS" "ALARM OL"; do
  set_status "$words"
  quiet "UPS that says $words"
done
set_status WAIT
blind "UPS that does not say whether the mains are there"
set_status OL
as_service
blind "UPS on mains, asked by who may not read NUT's files"
set_status "OB DISCHRG" desk
state "second UPS on battery, asked by who may not read NUT's files" ups_battery
set_status OL desk
gone
asks vela-health --json
kill "$(cat /run/nut/upsd.pid)"
until_is 15 '' status
blind "UPS server gone"
as_service
blind "UPS server gone, and NUT's files not readable"
collects nut
blind "UPS server gone, NUT's files read by the collector"
# Elsewhere than a server is looked for by itself: monitor lines tell, by this machine's own name.
printf 'LISTEN ::1 4000\nMAXAGE 5\n' >$conf/upsd.conf
printf 'MONITOR ups@%s:4000 1 admin lab primary\n' "$(uname -n)" >$conf/upsmon.conf
chown root:nut $conf/* && chmod 640 $conf/*
server="[::1]:4000"
upsd
# NUT 2.8.0's driver keeps the connection of the server that ended, and aborts ("bit out of range")
# at the first value that it then tells: it begins anew with the server.
upsdrvctl stop
upsdrvctl start
until_is 15 OL status
quiet "UPS server on ::1 and another port, by this machine's name"
set_status "OB DISCHRG"
state "UPS on battery, its server on ::1 and another port" ups_battery
set_status OL
gone
kill "$(cat /run/nut/upsd.pid)"
printf 'MONITOR ups@192.0.2.1 1 admin lab secondary\n' >$conf/upsmon.conf
blind "UPS of another machine"
echo 'accept="ups"' >/etc/velainfo.conf
no_alarm "UPS of another machine, as its owner wants it" 0
rm /etc/velainfo.conf
echo MODE=none >$conf/nut.conf
quiet "no UPS, said by the collector"
collects nothing
rm -rf /run/vela-platform
blind "NUT installed, its files not readable and no collector"
asks vela-health --json
quiet "no UPS"
