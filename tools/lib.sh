# shellcheck shell=bash
# What run, test and tools/check share: progress lines, packages, build folders.
# Sourced with SOURCE set to the folder of the clone.

PROGRAM=${0##*/}
say() { printf '%s: %s\n' "$PROGRAM" "$*" >&2; }
die() { say "$*"; exit 70; }

# The files of the repository, with those about to be added, that match the patterns.
files() {
  git -C "$SOURCE" -c safe.directory="$SOURCE" ls-files -co --exclude-standard -- "$@" |
    while read -r file; do [ ! -f "$SOURCE/$file" ] || echo "$file"; done
}

# --- Packages

# The names under the given headings of tools/packages.
packages_under() {
  awk -v wanted=" $* " '
    { sub(/#.*/, ""); gsub(/[ \t]+/, "") }
    /^\[/ { on = index(wanted, " " substr($0, 2, length($0) - 2) " "); next }
    on && NF' "$SOURCE/tools/packages"
}

# Of the names on standard input, those that are not installed.
missing_of() {
  local wanted installed
  wanted=$(cat)
  # shellcheck disable=SC2086 # one word a package
  installed=$(dpkg-query -W -f '${Package} ${db:Status-Status}\n' $wanted 2>/dev/null |
    awk '$2 == "installed" { print $1 }') || true
  grep -vxF "${installed:-//}" <<<"$wanted" || true
}

# Puts the command in front of which apt-get runs as root into AS_ROOT.
become_root() {
  AS_ROOT=()
  [ "$(id -u)" = 0 ] && return
  if command -v sudo >/dev/null && { sudo -n true 2>/dev/null || [ -t 0 ]; }; then
    AS_ROOT=(sudo)
    return
  fi
  say "these Debian packages are missing, and only root can install them:"
  printf '  %s\n' "$@" >&2
  die "run this once as root, then $PROGRAM again: apt-get install --no-install-recommends $*"
}

# Brings the packages under the given headings onto this machine. Silent when all are there.
need() {
  local missing log
  command -v dpkg-query >/dev/null || die "this is no Debian system: install what tools/packages lists yourself"
  mapfile -t missing < <(packages_under "$@" | missing_of)
  [ ${#missing[@]} -gt 0 ] || return 0
  become_root "${missing[@]}"
  say "installing ${#missing[@]} Debian packages: ${missing[*]}"
  log=$(mktemp)
  if ! install_packages "${missing[@]}" >"$log" 2>&1; then
    tail -n 25 "$log" >&2
    die "apt-get could not install the packages; its last lines are above, all of them in $log"
  fi
  rm -f "$log"
}

# Package lists that are absent or out of date show as a failure: then they are fetched, once.
install_packages() {
  apt_get_install "$@" && return
  "${AS_ROOT[@]}" apt-get update && apt_get_install "$@"
}

# A machine that only builds and tests must not find itself running new services.
apt_get_install() {
  local policy=/usr/sbin/policy-rc.d kept=0 status=0
  [ -e "$policy" ] || kept=1
  if [ "$kept" = 1 ]; then
    printf '#!/bin/sh\nexit 101\n' | "${AS_ROOT[@]}" tee "$policy" >/dev/null
    "${AS_ROOT[@]}" chmod 755 "$policy"
  fi
  "${AS_ROOT[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends \
    -o DPkg::Lock::Timeout=300 "$@" </dev/null || status=$?
  [ "$kept" = 0 ] || "${AS_ROOT[@]}" rm -f "$policy"
  [ "$status" != 0 ] || switch_off_services "$@"
  return "$status"
}

switch_off_services() {
  local units
  [ -d /run/systemd/system ] || return 0
  mapfile -t units < <(dpkg-query -L "$@" | grep -E '/systemd/system/[^@/]*\.(service|socket|timer)$')
  [ ${#units[@]} = 0 ] || "${AS_ROOT[@]}" systemctl disable --quiet "${units[@]##*/}" || true
}

# --- Building, always outside the sources

# Beside the sources when this user may write there, else in the user's cache.
build_root() {
  local beside=$SOURCE/build
  if [ -w "$SOURCE" ] && [ ! -e "$beside" ] || [ -w "$beside" ]; then
    echo "$beside"
  else
    echo "${XDG_CACHE_HOME:-${HOME:?set HOME or XDG_CACHE_HOME}/.cache}/vela-systemhealth"
  fi
}

# Whether the preset's build folder was made for these sources, and with these arguments
# when any are given.
configured() {
  local folder=$BUILD/$1
  shift
  [ -f "$folder/build.ninja" ] && [ "$(sed -n 1p "$folder/configured-for")" = "$(frame)" ] || return 1
  [ $# = 0 ] || [ "$(sed -n 2p "$folder/configured-for")" = "$*" ]
}

# What a build folder depends on and ninja does not watch: where the sources are, the presets
# and the packages that were there to be found.
frame() { echo "$SOURCE $(cat "$SOURCE/CMakePresets.json" "$SOURCE/tools/packages" | cksum)"; }

# configure PRESET ARGS...
configure() {
  local preset=$1 folder=$BUILD/$1 log=$BUILD/$1/configure.log
  shift
  configured "$preset" "$@" && return
  say "configuring $preset"
  mkdir -p "$folder"
  grep -qsxF "CMAKE_HOME_DIRECTORY:INTERNAL=$SOURCE" "$folder/CMakeCache.txt" ||
    rm -rf "$folder/CMakeCache.txt" "$folder/CMakeFiles"
  local launcher=()
  ! command -v ccache >/dev/null || launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
  if ! (cd "$SOURCE" && cmake --preset "$preset" -B "$folder" "${launcher[@]}" "$@") >"$log" 2>&1; then
    tail -n 25 "$log" >&2
    say "configuring $preset failed; its last lines are above, all of them in $log"
    return 70
  fi
  printf '%s\n' "$(frame)" "$*" >"$folder/configured-for"
}

# build PRESET [TARGETS...]: in a configured folder; one at a time, however many ask.
build() {
  local folder=$BUILD/$1
  shift
  local quiet=(--quiet)
  [ ! -t 2 ] || quiet=()
  (
    flock 9
    if ! ninja -C "$folder" -n "$@" 2>/dev/null | grep -q 'no work to do'; then
      say "building ${folder##*/}"
      NINJA_STATUS="$PROGRAM: [%f/%t] " ninja -C "$folder" "${quiet[@]}" "$@" >&2
    fi
  ) 9>"$folder/.lock" || { say "building ${folder##*/} failed"; return 70; }
}

BUILD=$(build_root)
