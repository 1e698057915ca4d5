# shellcheck shell=bash
# The package, as dpkg installs it under a running systemd: its units start, its timer fires, its
# page answers, and its watchdog starts a stopped server anew. What it leaves behind is looked at by
# packaging/test-package, which can compare a whole root.

# holds NAME COMMAND...: reports it.
holds() {
  local name=$1
  shift
  if "$@"; then report ok "$name" "-> so it is"; else report FAIL "$name" "-> $* failed"; fi
}
package() { dpkg --force-unsafe-io --no-triggers "$@"; }
of_service() { systemctl show --value -p "$1" "${2-vela-health.service}"; }
serves_page() {
  local page
  exec 4<>/dev/tcp/127.0.0.1/8480 || return
  printf 'GET / HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n\r\n' >&4
  page=$(cat <&4)
  exec 4>&-
  [[ $page == "HTTP/1.1 200"*"<!doctype html>"* ]]
}
is_watched() { [ "$(of_service Type) $(of_service WatchdogUSec) $(of_service StatusText)" = "notify 30s Serving on http://127.0.0.1:8480/" ]; }
is_up() { [ "$(systemctl is-active vela-health.service)" = active ] && serves_page; }
has_collected() { until_is 120 '?*' find /run/vela-platform -name '*.json' && [ "$(of_service Result vela-platform-collect.service)" = success ]; }
restarted_by_watchdog() {
  local server started
  mkdir -p /run/systemd/system/vela-health.service.d
  printf '[Service]\nWatchdogSec=10\nRestartSec=1\n' >/run/systemd/system/vela-health.service.d/watchdog.conf
  systemctl daemon-reload
  systemctl restart vela-health.service
  server=$(of_service MainPID) started=$(of_service WatchdogTimestampMonotonic)
  # One that answers says so: then its watch begins anew, and nobody ends it.
  until_is 60 "!($started)" of_service WatchdogTimestampMonotonic && [ "$(of_service MainPID)" = "$server" ] || return
  kill -STOP "$server"
  until_is 90 1 of_service NRestarts && until_is 60 active systemctl is-active vela-health.service || return
  [ "$(of_service MainPID)" != "$server" ] && is_up
}
# The owner's own hook, which each round runs as the service's user.
tells_hook() {
  local hook=/etc/vela-health/notify.d/every-round/owner told=/run/vela-health-notify/told
  # shellcheck disable=SC2016
  printf '#!/bin/sh\nset -e\ncat >/run/vela-health-notify/told\ntest -n "$VELA_SENTENCE"\n' >"$hook"
  chmod 755 "$hook"
  systemctl start vela-health-notify.service && grep -q '"checks"' "$told" && [ "$(stat -c %U "$told")" = vela-health ]
}
writes_textfile() {
  local file=/var/lib/prometheus/node-exporter/vela-health.prom
  mkdir -p "${file%/*}"
  systemctl enable --now vela-health-textfile.timer && systemctl start vela-health-textfile.service || return
  grep -q '^vela_health_checks_made ' "$file" && [ "$(stat -c %a "$file")" = 644 ]
}
is_gone() {
  ! is_up && ! id vela-health && [ ! -e /usr/bin/vela-health ] &&
    [ -z "$(systemctl list-units --all --plain --no-legend 'vela-*')" ]
}

new=$(echo "$SHARED"/package/*.deb)

holds "package installed with nothing forced" package --install "$SHARED/last.deb"
holds "service is up when dpkg is done" is_up
holds "systemd knows that it is ready, and watches it" is_watched
holds "timer fires" has_collected
old_server=$(of_service MainPID)
holds "package upgraded" package --install "$new"
holds "upgraded service is up, another process" test "$(of_service MainPID)" != "$old_server" -a "$(systemctl is-active vela-health-notify.timer)" = active
holds "page answers after the upgrade" serves_page
holds "owner's hook is told" tells_hook
holds "node_exporter's file is written" writes_textfile
holds "watchdog starts a stopped server anew" restarted_by_watchdog
rm -r /run/systemd/system/vela-health.service.d
rm -r /etc/vela-health/notify.d/every-round/owner /var/lib/prometheus
holds "package removed and purged" package --purge vela-systemhealth
systemctl reset-failed
holds "nothing of it runs" is_gone

# As the suite found it.
tar -C / -xf "$SHARED/product.tar"
systemctl daemon-reload
