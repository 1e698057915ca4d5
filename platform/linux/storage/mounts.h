// The mount table of this process, through libmount, and what may be asked of it without
// touching a mount point.
#pragma once

#include <sys/types.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace linux_platform {

struct Mount {
  int id = 0, parent = 0;
  dev_t device = 0;          // of btrfs, zfs and network file systems an anonymous number
  std::string root;          // of the mount within its file system: "/" unless bind or subvolume
  std::string target;        // decoded
  std::string options;       // of this mount: "rw,relatime"
  std::string superOptions;  // of the file system: "ro,errors=remount-ro"
  std::string type, source;
};

// The mounts in a text in the format of /proc/self/mountinfo, in its order. Lines that are not of
// that format are left out.
std::vector<Mount> ParseMountInfo(const std::string& text);

// The mounts in /proc/self/mountinfo below the root: read every time, parsed when it has changed.
// False: errno says why, and `mounts` has what could be read.
using MountTable = std::shared_ptr<const std::vector<Mount>>;
bool ReadMounts(MountTable& mounts);

// The mount that a path equal to `target` leads to: the last one made there.
const Mount* FindMount(const std::vector<Mount>& mounts, std::string_view target);

// The mount above it that may hang and has to be passed to reach it: a network, FUSE or
// autofs mount; null when there is none. Even statfs of a healthy ext4 below a dead NFS waits.
const Mount* FindHangingParent(const std::vector<Mount>& mounts, const Mount& mount);
bool MayHang(std::string_view fileSystemType);

// Mounted at its own root, or at the subvolume that it was asked for: not a bind mount,
// which may be read-write over a file system that somebody made read-only.
bool IsOwnMount(const Mount& mount);

// The paths of fstab's second column, decoded, in its order; swap areas' "none" is kept.
std::vector<std::string> ParseFstabTargets(const std::string& text);
// The device column of /proc/swaps.
std::vector<std::string> ParseSwaps(const std::string& text);

}  // namespace linux_platform
