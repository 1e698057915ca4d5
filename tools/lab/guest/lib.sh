# shellcheck shell=bash
# What the areas share: bringing states about, and asking what the appliance says of them.
# Sourced by an area's run (see suite); AREA is its name, descriptor 3 the report.

# Processes are dear on an emulated processor: what the shell can do by itself, it does.

# --- The report: one line a state, and the same for the host in $RESULTS
# (outcome, area, state, seconds, words; tabs between).

report() { # report ok|FAIL STATE WORDS
  printf '%-4s %s %s\n' "$1" "$2" "$3" >&3
  printf '%s\t%s\t%s\t%s\t%s\n' "$1" "$AREA" "$2" "$SECONDS" "$3" >>"$RESULTS"
}

# --- Asking

declare -A FINDINGS=()
while read -r name type id text; do FINDINGS[$name]="$type $id $text"; done <"$LAB/findings"

# The rule as the module writes it, its members in the order of their names.
RULE='"rule":\{"description":\{"description_format":"([^"]*)","description_params":\[([^]]*)\],'
RULE+='"description_use_formatted":(true|false)\},"id":"([^"]*)","priority":[-0-9.e]+,"type":([0-9]+)\}'

# asks COMMAND...: how the question is put from now on; `serve` puts it to the service.
asks() { QUESTION=("$@"); }
asks vela-health --json

# The finding as "TYPE ID TEXT" in GOT, its composed format in GOT_FORMAT, the program's exit status
# in STATUS.
ask() {
  local answer text
  [ -z "${COLLECTS-}" ] || systemctl start vela-platform-collect
  answer=$("${QUESTION[@]}" 2>>"$TRACE") && STATUS=0 || STATUS=$?
  GOT="no answer, exit status $STATUS" GOT_FORMAT=
  if [[ $answer =~ $RULE ]]; then
    GOT_FORMAT=${BASH_REMATCH[1]} text=${BASH_REMATCH[2]##*,}
    [ "${BASH_REMATCH[3]}" = false ] || text=$GOT_FORMAT
    text=${text#\"}
    GOT="${BASH_REMATCH[5]} ${BASH_REMATCH[4]} ${text%\"}"
  fi
  echo "--- says: $GOT ($GOT_FORMAT)"
}

# await FINDING FORMAT: asks until the appliance says so, AWAIT_SECONDS seconds at most.
await() {
  local wanted=${FINDINGS[$1]:?no finding is called $1} until=$((SECONDS + AWAIT_SECONDS))
  while :; do
    ask
    [ "$GOT" != "$wanted" ] || [[ -n $2 && $GOT_FORMAT != "$2" ]] || return 0
    [ "$SECONDS" -lt "$until" ] || return 1
    sleep 0.3
  done
}

# begin: an area that finds the machine unwell would prove nothing.
begin() {
  rm -rf /run/vela-platform
  await ok '' && return
  report FAIL "beginning" "-> an area before this one left the machine with $GOT $GOT_FORMAT"
  exit 1
}

# state NAME FINDING [FORMAT]: the appliance is in this state now and must say so.
# Its line is written once it has been repaired and `gone` saw it go.
SEEN=()
state() {
  # shellcheck disable=SC2034
  STATE=$1 # of which told.sh speaks
  echo "--- state: $1"
  if await "$2" "${3-}"; then
    SEEN+=("$1 -> $GOT, exit status $STATUS")
    [ -z "${EVERYBODY-}" ] || others_see "$1" "$2" "${3-}"
  else
    report FAIL "$1" "-> wanted ${FINDINGS[$2]} ${3-}, got $GOT $GOT_FORMAT"
  fi
}

# gone: all that was seen is repaired, and the appliance well again.
gone() {
  local one well=yes
  [ ${#SEEN[@]} -gt 0 ] || return 0
  await ok '' || well=
  for one in "${SEEN[@]}"; do
    if [ -n "$well" ]; then
      report ok "${one%% -> *}" "-> ${one#* -> }"
    else
      report FAIL "${one%% -> *}" "-> repaired, and yet $GOT"
    fi
  done
  SEEN=()
}

# no_finding NAME: a source may be gone (exit status 3), but that is no reason for alarm.
no_finding() { no_alarm "$1" '[03]'; }

# quiet NAME: a healthy machine. Every source is read or not there, and the system log has no word.
quiet() {
  no_alarm "$1" 0 log
  [ -z "${EVERYBODY-}" ] || others_are_quiet "$1"
}

# blind NAME: nothing is found, and somebody does not see: exit status 3, never plain "Healthy".
blind() { no_alarm "$1" 3; }

# no_alarm NAME EXIT-STATUS-PATTERN [log]. An emulated processor on a busy machine may be too slow
# for a daemon's bound: a source that was unread is asked for once more, an alarm is one at once.
no_alarm() {
  local said='' try
  echo "--- no finding: $1"
  for try in 1 2 3; do
    [ -z "${3-}" ] || journal_lines >/dev/null
    ask
    [ -z "${3-}" ] || said=$(journal_lines)
    # shellcheck disable=SC2053
    if [[ $GOT == "${FINDINGS[ok]}" && $STATUS == $2 && -z $said ]]; then
      report ok "$1" "-> system_ok"
      return
    fi
    [[ $GOT == "${FINDINGS[ok]}" && ($STATUS == 3 || $said == *"in time"*) ]] || break
    echo "--- unread at try $try: $said"
    sleep 1
  done
  report FAIL "$1" "-> false alarm: $GOT $GOT_FORMAT, exit status $STATUS, said: ${said//$'\n'/; }"
}

# collects PART...|all|nothing: what the collector looks at before each question, with the rights
# and bounds of its unit, as its timer would have it do.
collects() {
  local setting=/run/systemd/system/vela-platform-collect.service.d/part.conf
  COLLECTS=$1
  rm -f "$setting"
  case $1 in
    nothing) COLLECTS= ;;
    all) ;;
    *)
      mkdir -p "${setting%/*}"
      printf '[Service]\nExecStart=\nExecStart=vela-platform-collect --once' >"$setting"
      printf ' --part %s' "$@" >>"$setting" ;;
  esac
  systemctl daemon-reload
}

# serve: from now on the health service answers, under its unit and its own user.
serve() {
  id vela-health || useradd --system --user-group --no-create-home --home-dir /nonexistent vela-health
  systemctl daemon-reload
  systemctl start vela-health
  asks over_http
  until_is 10 '{"hostname"*' over_http
}
over_http() {
  exec 4<>/dev/tcp/127.0.0.1/8480 || return
  printf 'GET /api/VELA.Core.System.SystemHealth/1/get HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n\r\n' >&4
  sed '1,/^\r$/d' <&4
  exec 4>&-
}
# as_service: the program asks as the service's user, whose exit status HTTP does not carry.
as_service() {
  id vela-health || useradd --system --user-group --no-create-home --home-dir /nonexistent vela-health
  asks setpriv --reuid vela-health --regid vela-health --clear-groups vela-health --json
}
serve_no_more() {
  systemctl stop vela-health
  asks vela-health --json
}

# What the program logged since the last look.
journal_lines() { journalctl -q -t vela-health -o cat --cursor-file="$CURSOR" --no-pager; }

# shellcheck disable=SC1091
. "$LAB/told.sh"

# --- Bringing about

by() { readlink -f "$(find /dev/disk/by-id -name "*$1" | head -n 1)"; }
name_of() { basename "$(readlink -f "$1")"; }
qmp() { python3 "$LAB/qmp.py" "$@"; }

# until_is SECONDS PATTERN COMMAND...: waits until the command's output matches, and prints it.
until_is() {
  local until=$((SECONDS + $1)) pattern=$2 output
  shift 2
  while :; do
    output=$("$@" 2>/dev/null)
    # shellcheck disable=SC2053
    if [[ $output == $pattern ]]; then break; fi
    [ "$SECONDS" -lt "$until" ] || { echo "$output" && return 1; }
    sleep 0.2
  done
  echo "$output"
}

# leave MOUNT PERCENT: fills the volume until that share of its blocks is available.
leave() {
  local available blocks size
  read -r available blocks size < <(stat -f -c '%a %b %S' "$1")
  size=$(((available - blocks * $2 / 100) * size))
  # Not every file system can give room without having it written.
  fallocate -l "$size" "$1/filler" || head -c "$size" /dev/zero >"$1/filler"
  sync -f "$1"
}

# failing_device NAME DISK: /dev/mapper/NAME, which `break_device NAME` makes answer every request
# with an I/O error and `mend_device NAME DISK` well again.
failing_device() { dmsetup create "$1" --table "0 $(blockdev --getsz "$2") linear $2 0"; }
reload_device() {
  dmsetup suspend --noflush --nolockfs "$1" && dmsetup load "$1" --table "$2" && dmsetup resume "$1"
}
break_device() { reload_device "$1" "0 $(blockdev --getsz "/dev/mapper/$1") error"; }
mend_device() { reload_device "$1" "0 $(blockdev --getsz "$2") linear $2 0"; }

# The management controller is there, and is not: only the collector may ask it.
plug_in_controller() { modprobe -a ipmi_devintf ipmi_si && until_is 10 /dev/ipmi0 ls /dev/ipmi0; }
unplug_controller() { modprobe -qr ipmi_devintf acpi_ipmi ipmi_si; }

# The factory settings of a model that takes no disks of its own, and of one that does.
bayless() { mkdir -p /etc.defaults && echo 'maxdisks="0"' >/etc.defaults/velainfo.conf; }
with_bays() { rm /etc.defaults/velainfo.conf; }

# A SCSI or SATA disk is torn out, and all are put back.
tear_out() { echo 1 >"/sys/block/$(name_of "$1")/device/delete"; }
put_back() {
  local host
  for host in /sys/class/scsi_host/host*; do echo '- - -' >"$host/scan"; done
  udevadm settle
}
