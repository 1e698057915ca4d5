# shellcheck shell=bash
# The security scan's result, from a report as the scanner leaves it, under the scan's unit. The
# scanner itself, a long shell script, would take minutes on an emulated processor.
setting=/run/systemd/system/vela-security-scan.service.d/no-scanner.conf
mkdir -p "${setting%/*}"
printf '[Unit]\nConditionPathExists=\n[Service]\nExecStart=\nExecStart=true\n' >"$setting"
systemctl daemon-reload
finds() { printf '%s\n' report_version_major=1 "$@" finish=true >/var/log/lynis-report.dat; }
scanned() { # scanned LINES...
  finds "$@"
  systemctl start vela-security-scan
}
quiet "never scanned"
scanned
quiet "scanned, nothing found"
scanned 'warning[]=PKGS-7392|Found one or more vulnerable packages.|-|-|'
quiet "scanned, an update is pending"
scanned 'warning[]=AUTH-9204|Multiple users with UID 0 found in passwd file|-|-|'
state "scanned, a second account with root's number" scan_danger
HOW='systemctl start' BY_HAND=finds as_told AUTH-9204
gone
rm "$setting"
systemctl daemon-reload
