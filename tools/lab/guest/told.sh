# shellcheck shell=bash
# Doing literally what the answer says. Sourced by lib.sh.

# as_told WORDS [PLACEHOLDER=WHAT]...: types what the answer says of the state that was seen last:
# the commands that show why, then those that mend it, WHAT in a placeholder's place. WORDS, of the
# part that is broken, must be in the why, and what shows it must name a part. BY_HAND, where it is
# set, is done between the two: what no command can. A command with a place for what was not given
# is for another case. HOW is the beginning of those commands for all machines that are typed, too.
# Whether it helped, the next state sees, or `gone`.
as_told() {
  local words=$1 why='' kind text names typed='' trouble=''
  shift
  [ -z "${COLLECTS-}" ] || systemctl start vela-platform-collect
  while IFS=$'\t' read -r -u 5 kind text names; do
    echo "--- told: $kind: $text"
    case $kind in
      why) why+="$text " && continue ;;
      how) [[ -n ${HOW-} && $text == "$HOW"* ]] || continue ;;
    esac
    [ "$kind" = show ] || { eval "${BY_HAND-}" && BY_HAND=; }
    [[ ! $text =~ (^|[ /@:+])[A-Z]{3,}(-[A-Z]+)*($|[ /@:]) ]] || continue
    typed+="$text; "
    types "$text" && { [ "$kind" != show ] || names_one "$names"; } ||
      trouble=${trouble:-"$text: $SAID"}
  done 5< <(vela-health --json=full | python3 "$LAB/told.py" "$@")
  eval "${BY_HAND-}"
  [[ $why == *"$words"* ]] || trouble="no \"$words\" in why: $why"
  [ -n "$typed" ] || trouble=${trouble:-"no command, and why: $why"}
  if [ -z "$trouble" ]; then
    SEEN+=("$STATE, as told -> $typed$why")
  else
    report FAIL "$STATE, as told" "-> ${trouble//$'\n'/ | }"
  fi
}

# types COMMAND: as a person at a terminal does who says yes to each question; what it printed in
# SAID.
types() {
  local status
  # Some answers only: what nobody reads, script(1) keeps in memory.
  SAID=$(yes | head -n 40 | PAGER='cat' timeout 100 script --quiet --return --echo never --command "$1" /dev/null)
  status=$?
  SAID=${SAID//$'\r'/}
  echo "--- types: $1 -> exit status $status: $SAID"
  # Some tell by it what they found, or that they mended it. The scanner is not in the lab.
  case $status:$1 in
    0:* | 1:*'nginx -t'* | 1:*e2fsck* | 8:smartctl* | 127:lynis*) ;;
    *) SAID="exit status $status: $SAID" && return 1 ;;
  esac
}

# names_one NAMES: of those, commas between, what was just typed printed one.
names_one() {
  local name names
  [ -n "$1" ] || return 0 # a cause without a part
  IFS=, read -ra names <<<"$1"
  for name in "${names[@]}"; do [[ $SAID != *"$name"* ]] || return 0; done
  SAID="names none of $1: $SAID"
  return 1
}
