# shellcheck shell=bash
# Fans and temperatures of sensor chips: the kernel's own drivers over emulated chips.
collects fans
modprobe i2c-dev
modprobe i2c-stub chip_addr=0x2c,0x4c
bus=$(i2cdetect -l | awk '/SMBus stub/ { sub("i2c-", "", $1); print $1 }')
new_device=/sys/bus/i2c/devices/i2c-$bus/new_device
put() { # put CHIP REGISTER=VALUE...
  local chip=$1 pair
  shift
  for pair; do i2cset -f -y "$bus" "$chip" "${pair%=*}" "${pair#*=}"; done
}
chip() { grep -lx "$1" /sys/class/hwmon/*/name | xargs dirname; }

# Three fans: the first turns, the others are headers with nothing on them and alarms.
put 0x2c 0x48=0x2c 0x40=0x01 0x47=0x50 0x27=42 0x39=80 0x3a=75 \
  0x28=0x50 0x29=0xff 0x2a=0xff 0x3b=0xa0 0x3c=0xa0 0x3d=0xa0 0x41=0x80 0x42=0x08
for register in 0x20 0x21 0x22 0x23 0x24 0x25 0x26; do put 0x2c $register=0xa0; done
echo lm78 0x2c >"$new_device"
modprobe lm78
# Two temperatures of 45 and 60 C, critical at 85; the first one's maximum is exceeded.
put 0x4c 0xfe=0x41 0xff=0x41 0x00=45 0x01=60 0x05=40 0x06=0 0x07=80 0x08=0 0x19=85 0x20=85 0x21=10 0x02=0x40
echo adm1032 0x4c >"$new_device"
modprobe lm90
until_is 5 '*' chip lm78
lm78=$(chip lm78) lm90=$(chip adm1032)
cat "$lm78"/fan?_{input,min,alarm} "$lm90"/temp?_{input,crit,crit_alarm,max_alarm}
quiet "fan headers with nothing on them, a maximum exceeded"

turn() { # the first fan turns again
  put 0x2c 0x28=0x50 0x41=0x80
  until_is 5 '[1-9]*' cat "$lm78/fan1_input"
}
put 0x2c 0x28=0xff 0x41=0xc0
until_is 5 0 cat "$lm78/fan1_input"
state "fan stopped" fan
BY_HAND=turn as_told fan1
gone

printf 'chip "lm78-*"\n  label fan1 "CPU Fan"\n' >/etc/sensors.d/lab
put 0x2c 0x28=0xff 0x41=0xc0
until_is 5 0 cat "$lm78/fan1_input"
state "processor's fan stopped" cpu_fan
BY_HAND=turn as_told "CPU Fan"
gone
# 1350000 / 250 / 2 = 2700 rpm, where the chip has 1350000 / 160 / 2 = 4218 as its minimum.
printf 'chip "lm78-*"\n  set fan1_min 4218\n' >/etc/sensors.d/lab
put 0x2c 0x28=0xfa
until_is 5 2700 cat "$lm78/fan1_input"
quiet "fan below its minimum, without an alarm"
put 0x2c 0x41=0xc0
state "fan with an alarm below the minimum that was set on purpose" fan
rm /etc/sensors.d/lab
gone
quiet "fan with an alarm below a minimum that nobody set"
put 0x2c 0x28=0x50 0x41=0x80
until_is 5 8437 cat "$lm78/fan1_input"

echo 'fan.expect="lm78:fan2"' >/etc/velainfo.conf
state "expected fan that never turned" fan
rm /etc/velainfo.conf
gone

put 0x4c 0x01=90
sleep 2
state "temperature past its critical limit" temperature
BY_HAND='put 0x4c 0x01=60; sleep 2' as_told temp2
gone
put 0x4c 0x01=128 0x02=0x04
sleep 2
quiet "diode broken"
echo 0x2c >"${new_device/new/delete}"
echo 0x4c >"${new_device/new/delete}"
rmmod i2c-stub
