// A mounted file system: its capacity, what ext4 and btrfs have recorded about their own
// troubles, and what the mount table gives away. No device is opened.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/storage/block.h"
#include "platform/linux/storage/mounts.h"

namespace linux_platform {

struct Capacity {
  std::uint64_t size = 0, free = 0, available = 0;  // bytes; available: without root's reserve
  std::uint64_t files = 0, freeFiles = 0;           // both 0 where there is no limit

  // As df counts: root's reserve belongs to nobody who could fill the volume.
  std::uint64_t Used() const { return size - free; }
  std::uint64_t Total() const { return Used() + available; }
};

// The capacity of the file system mounted at `path`, through O_PATH, which triggers no automount
// and wakes no disk. False: errno says why. It is ENODEV when another device than `device` is
// mounted there by now; a device without a major number (btrfs, ZFS) is not compared.
bool ReadCapacity(const std::string& path, dev_t device, Capacity& capacity);

// Whether the mount's source names its device, because its device number does not.
bool HasAnonymousDevice(const Mount& mount);
// What lies under a mount, for btrfs under the device that it is mounted by. Empty for a file
// system without a device: ZFS, a network's.
Stack ReadStackUnder(const Mount& mount);

// Errors counted by ext4 for the device `name`; `last` in seconds since 1970, by the clock of then.
struct Ext4Errors {
  std::int64_t count = 0;
  std::int64_t last = 0;
  bool stops = false;           // told to take no more writes after an error, in whatever way
  bool journalAborted = false;  // which stops it, whatever it was told
};
Ext4Errors ReadExt4Errors(const std::string& name);

// A btrfs: Abnormal when a member is missing or has recorded errors.
struct Btrfs {
  Health health = Health::Normal;
  std::vector<std::string> members;  // kernel names
  bool full = false;                 // nothing can be written, whatever room there is for data
  std::string folder;                // in /sys
};
// What it is once so many of its members are gone since it was mounted, which it does not tell.
Health JudgeLoss(const Btrfs& btrfs, std::size_t lost);
// Every btrfs that is mounted, by each of its members.
using BtrfsMembers = std::map<std::string, std::shared_ptr<const Btrfs>>;
BtrfsMembers ReadBtrfs();

// The signs that a mounted file system has stopped working. A plain read-only mount is
// none of them.
struct CrashSigns {
  bool emergencyReadOnly = false;  // the kernel says so itself
  bool forcedReadOnly = false;     // asked for read-write, and lost it
  bool errorsStoppedIt = false;    // ext4 told to stop at errors, and met one since boot
  bool unreadable = false;         // even its root gives I/O errors
  bool deviceGone = false;
  bool deviceFailed = false;  // the array or mapping beneath is beyond repair

  bool Any() const {
    return emergencyReadOnly || forcedReadOnly || errorsStoppedIt || unreadable || deviceGone ||
           deviceFailed;
  }
};

// The signs that the mount table shows.
CrashSigns FindCrashSigns(const Mount& mount);
// An error since `boot` (seconds since 1970) that this ext4 stops at. The same driver mounts ext2
// and ext3.
bool ErrorsStoppedIt(const Mount& mount, const Ext4Errors& errors, std::int64_t boot);

// When the machine was started, from /proc/stat's text; 0 when it does not say.
std::int64_t ParseBootTime(const std::string& text);
// The same, by the clock that the machine had at its start where that was set forward since: what
// was noted in between would seem to be of an earlier boot.
std::int64_t ReadBootTime();

}  // namespace linux_platform
