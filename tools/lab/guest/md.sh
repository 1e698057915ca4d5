# shellcheck shell=bash disable=SC2034
# Arrays: making, filling and scrapping them. Sourced by the areas md-*.
modprobe -a raid0 raid1 raid456
A=$(by LABSATA0) B=$(by LABSATA1) C=$(by LABSATA2)
D=$(by LABSCSI0) E=$(by LABSCSI1) F=$(by LABSCSI2) G=$(by LABSCSI3)
of() { cat "/sys/block/$1/md/$2"; }
slow() { echo 500 | tee "/sys/block/$1/md/sync_speed_max" >"/sys/block/$1/md/sync_speed_min"; }
make() { # make NAME LEVEL DISKS...
  local array=$1 level=$2
  shift 2
  build_array "$array" "$level" --assume-clean --raid-devices=$# "$@"
}
build_array() { # build_array NAME LEVEL ARGUMENTS...
  local array=$1 level=$2 size=(--size=65536)
  shift 2
  [ "$level" != 0 ] || size=()
  mdadm --create "/dev/$array" --run --metadata=1.2 --level="$level" "${size[@]}" "$@"
  udevadm settle
}
scrap() { # scrap NAME DISKS...
  mdadm --stop "/dev/$1"
  udevadm settle
  shift
  mdadm --zero-superblock "$@"
}
# put_in NAME DISK: as a new member; it rebuilds slowly.
put_in() {
  mdadm "/dev/$1" --remove "$2"
  mdadm --zero-superblock "$2"
  slow "$1"
  mdadm "/dev/$1" --add "$2"
  until_is 10 recover of "$1" sync_action
}
whole() { # whole NAME: lets it rebuild to the end
  echo 900000 >"/sys/block/$1/md/sync_speed_max"
  until_is 60 idle of "$1" sync_action
}
