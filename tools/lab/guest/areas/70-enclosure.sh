# shellcheck shell=bash
# An expansion unit that speaks SES: the kernel's drivers over an iSCSI target of our own.
collects ses
target=iqn.2000-01.lab.example:ses
python3 "$LAB/ses_target.py" 3261 /tmp/ses.state &
server=$!
modprobe -a iscsi_tcp enclosure ses sg
echo "InitiatorName=iqn.2000-01.lab.example:appliance" >/etc/iscsi/initiatorname.iscsi
pgrep -x iscsid || iscsid
until_is 10 '*:ses' iscsiadm -m discovery -t st -p 127.0.0.1:3261
iscsiadm -m node -T "$target" -p 127.0.0.1:3261 --login
udevadm settle
until_is 10 /sys/class/enclosure/* find /sys/class/enclosure -mindepth 1
put() { printf '%s\n' "$@" >/tmp/ses.state; }

put
quiet "expansion unit, well"
put 3:1:critical
state "expansion unit's fan failed" unit_fan 'TEST ENCLOSURE-1{0} {1}'
as_told "TEST ENCLOSURE-1"
put 2:0:critical
state "expansion unit's supply failed" unit_supply 'TEST ENCLOSURE-1{0}1{1} {2}'
as_told "TEST ENCLOSURE-1"
put 2:0:critical 2:1:critical
state "both supplies of the unit failed" unit_supply 'TEST ENCLOSURE-1{0}1, TEST ENCLOSURE-1{0}2{1} {2}'
put
gone
put 2:1:absent 3:0:absent
quiet "expansion unit with empty bays"
iscsiadm -m node -T "$target" --logout
kill "$server"
until_is 10 '' find /sys/class/enclosure -mindepth 1
quiet "expansion unit unplugged"
