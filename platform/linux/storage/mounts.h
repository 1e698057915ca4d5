// The mount table of this process, through libmount, and what may be asked of it without
// touching a mount point.
#pragma once

#include <sys/types.h>

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/linux/base/trouble.h"

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

// All mounts, in the table's order. What is asked of each one takes no look at all the others.
class Mounts {
 public:
  explicit Mounts(std::vector<Mount> rows);
  Mounts(Mounts&&) = default;

  auto begin() const { return rows_.begin(); }
  auto end() const { return rows_.end(); }

  // The mount that a path equal to `target` leads to: the last one made there. Null: none.
  const Mount* FindAt(std::string_view target) const;
  // The mount above one of these that may hang and has to be passed to reach it: a network, FUSE
  // or autofs mount; null when there is none. Even statfs of a healthy ext4 below a dead NFS waits.
  const Mount* FindHangingParent(const Mount& mount) const;

 private:
  void FindHangingParents();

  std::vector<Mount> rows_;
  std::unordered_map<std::string_view, const Mount*> byTarget_;
  std::vector<const Mount*> hangingParents_;  // of each row
};

// The mounts in a text in the format of /proc/self/mountinfo. Lines that are not of that format
// are left out.
Mounts ParseMountInfo(const std::string& text);

// The mounts in /proc/self/mountinfo below the root: read every time, parsed when it has changed.
// False: errno says why, and `mounts` has what could be read.
using MountTable = std::shared_ptr<const Mounts>;
bool ReadMounts(MountTable& mounts);

bool MayHang(std::string_view fileSystemType);

// Mounted at its own root, or at the subvolume that it was asked for: not a bind mount,
// which may be read-write over a file system that somebody made read-only.
bool IsOwnMount(const Mount& mount);

// Whether this is a container: its devices and its tables are of another machine.
bool IsContainer(const Mounts& mounts);

// The mount above `path`, or at it, whatever lies between; null without any.
const Mount* FindMountOf(const Mounts& mounts, std::string_view path);

// The paths of fstab's second column, decoded, each with the place of its first line among the
// lines; swap areas' "none" is kept.
using FstabTargets = std::unordered_map<std::string, std::size_t>;
struct FstabLine {
  std::string source;  // "UUID=1", "/dev/md/data", of ZFS "pool/dataset"
  std::string target;  // decoded, without a slash at its end
  std::string type, options;
};
struct Fstab {
  FstabTargets targets;
  std::vector<FstabLine> storage;   // of this machine's own, to be mounted at every start
  std::vector<std::string> arrays;  // "/dev/md0", "/dev/md/data", also of lines for other times
  Trouble unread;                   // why nothing is known of it
};
Fstab ParseFstab(const std::string& text);
// /etc/fstab below the root: parsed when it has changed.
std::shared_ptr<const Fstab> ReadFstab();
// The device column of /proc/swaps.
std::vector<std::string> ParseSwaps(const std::string& text);

}  // namespace linux_platform
