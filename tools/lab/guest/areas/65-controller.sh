# shellcheck shell=bash
# A management controller's supplies, fans and temperature. It reads the file at each question.
collects ipmi
plug_in_controller
put() { printf '%s\n' "$@" >"/own/bmc.state"; }
supply1=0x10 supply2=0x11 fan1=0x20 inlet=0x30 failed=0x03 predicted=0x05 no_mains=0x09 empty=0x00

put
quiet "controller, all well"
put "$supply2 $failed"
state "redundant supply, failed" supply '{0}2{1} {2}'
as_told "Power supply 2"
put "$supply2 $predicted"
state "redundant supply that predicts its failure" supply '{0}2{1} {2}'
put "$supply1 $no_mains"
state "redundant supply, unplugged" supply '{0}1{1} {2}'
put "$supply1 $no_mains" "$supply2 $failed"
# The first that failed is the one that is named.
state "both supplies" supply '{0}1{1} {2}'
put
gone
put "$supply2 $empty"
quiet "supply bay, empty"
put "$supply2 $empty" "$supply1 $failed"
state "only supply, failed" power
put "$fan1 0"
state "controller's fan stopped" fan
as_told FAN1
put "$inlet 85"
state "controller's temperature critical" temperature
put
gone
put "$inlet 75"
quiet "controller's temperature, warm"
put
unplug_controller
rm -rf /run/vela-platform
quiet "no controller"
