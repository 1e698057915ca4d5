// The devices beneath the mount table, each looked up once.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/storage/block.h"
#include "platform/linux/storage/disk_class.h"
#include "platform/linux/storage/filesystem.h"
#include "platform/linux/storage/mounts.h"

namespace linux_platform {

class Devices {
 public:
  // Keeps a reference to `mounts`; every mount asked for is one of them. `esataPorts` as for
  // ReadDiskFacts; their text must outlive this.
  Devices(const Mounts& mounts, std::vector<std::string_view> esataPorts);

  // What lies under a mount; for btrfs all of its members.
  const Stack& GetStack(const Mount& mount);
  // The btrfs that is mounted there: its health, Normal for another file system; and whether it
  // takes no more, whatever its capacity says.
  Health GetBtrfsHealth(const Mount& mount);
  bool IsFullBtrfs(const Mount& mount) { return GetFileSystem(mount).full; }

  const DiskFacts& GetFacts(const std::string& disk);
  DiskClass Classify(const std::string& disk) { return ClassifyDisk(GetFacts(disk)); }
  // The one class that all the disks of the stack share; Internal otherwise.
  DiskClass Classify(const Stack& stack);
  // Whether no disk of the stack answers any more. One that is left may be a mirror's.
  bool IsOffline(const Stack& stack);
  bool CarriesSystem(const std::string& disk) const { return systemDisks_.contains(disk); }
  // The stacks of "/" and of the swap areas.
  const std::vector<Stack>& GetRootAndSwap() const { return rootAndSwap_; }

 private:
  struct FileSystem {
    Stack stack;
    Health btrfs = Health::Normal;
    bool full = false;
  };
  struct Key {
    dev_t device;             // 0 where it is anonymous: then the source tells
    std::string_view source;  // of the mount
    auto operator<=>(const Key&) const = default;
  };
  const FileSystem& GetFileSystem(const Mount& mount);
  void AddMembers(const Mount& mount, FileSystem& found);
  void FindSystemDisks();
  bool IsMountedAsMedia(const std::string& disk);

  const Mounts& mounts_;
  std::vector<std::string_view> esataPorts_;
  std::map<Key, FileSystem> fileSystems_;
  std::optional<BtrfsMembers> btrfs_;  // none: not read yet
  std::map<std::string, DiskFacts> facts_;
  std::optional<std::set<std::string>> mediaDisks_;  // likewise
  std::set<std::string> systemDisks_;
  std::vector<Stack> rootAndSwap_;
};

}  // namespace linux_platform
