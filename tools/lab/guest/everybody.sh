# shellcheck shell=bash disable=SC2034
# Once sourced, each state and each quiet machine is asked about by the service's user, too: the
# answer is the same. And where the collector looks, none is plain "Healthy" before its first round
# or with its snapshots a day old.
EVERYBODY=yes
id vela-health || useradd --system --user-group --no-create-home --home-dir /nonexistent vela-health
AS_USER=(setpriv --reuid vela-health --regid vela-health --clear-groups --bounding-set=-all
  --no-new-privs)

# NUT's settings, which are none, are opened to that user until the area ends: else he never knows
# all.
chmod o+x /etc/nut && chmod o+r /etc/nut/nut.conf
trap 'chmod o-x /etc/nut; chmod o-r /etc/nut/nut.conf' EXIT

others_see() { # others_see NAME FINDING FORMAT
  local QUESTION=("${AS_USER[@]}" vela-health --json)
  local collects=${COLLECTS-} COLLECTS='' wanted=$STATUS
  if ! await "$2" "$3" || [ "$STATUS" != "$wanted" ]; then
    report FAIL "$1, as the service's user" \
      "-> wanted ${FINDINGS[$2]} $3, got $GOT $GOT_FORMAT, exit status $STATUS"
  fi
  [ -n "$collects" ] || return 0
  cp -a /run/vela-platform /run/aside
  sed -i -E 's/"written":[0-9]+/"written":'"$((EPOCHSECONDS - 86400))/" /run/vela-platform/*.json
  ask
  [ "$STATUS" != 0 ] || report FAIL "$1, with snapshots a day old" "-> plain $GOT"
  rm -rf /run/vela-platform
  ask
  [ "$STATUS" != 0 ] || report FAIL "$1, before the collector's first round" "-> plain $GOT"
  mv /run/aside /run/vela-platform
}

# What was unread is asked for again: the emulated processor may have been too slow.
others_are_quiet() {
  local QUESTION=("${AS_USER[@]}" vela-health --json) COLLECTS='' said
  for _ in 1 2 3; do
    ask
    said=$(journal_lines)
    [[ $GOT == "${FINDINGS[ok]}" && $STATUS == [03] ]] || break
    [ "$STATUS" != 0 ] || return 0
    sleep 1
  done
  report FAIL "$1, as the service's user" \
    "-> $GOT $GOT_FORMAT, exit status $STATUS, said: ${said//$'\n'/; }"
}

# words TEXT: the answer for people says so, to root and to the service's user.
words() {
  local all said
  [ -z "${COLLECTS-}" ] || systemctl start vela-platform-collect
  for all in "$(vela-health 2>&1)" "$("${AS_USER[@]}" vela-health 2>&1)"; do
    read -r -d '' -a said <<<"$all" || true
    [[ ${said[*]} == *"$1"* ]] || report FAIL "the words \"$1\"" "-> not in: ${said[*]}"
  done
}
