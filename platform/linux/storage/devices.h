// The devices beneath the mount table, each looked up once.
#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/linux/storage/block.h"
#include "platform/linux/storage/disk_class.h"
#include "platform/linux/storage/filesystem_errors.h"
#include "platform/linux/storage/mounts.h"

namespace linux_platform {

class Devices {
 public:
  // Keeps a reference to `mounts`; all that are asked about are of them. `esataPorts` as for
  // ReadDiskFacts; their text must outlive this.
  Devices(const std::vector<Mount>& mounts, std::vector<std::string_view> esataPorts);

  // What lies under a mount; for btrfs all of its members.
  const Stack& Under(const Mount& mount);
  // Of the btrfs that the mount belongs to.
  Health BtrfsHealth(const Mount& mount);

  const DiskFacts& Facts(const std::string& disk);
  DiskClass Class(const std::string& disk) { return ClassOf(Facts(disk)); }
  // The one class that all the disks of the stack share; Internal otherwise.
  DiskClass Class(const Stack& stack);
  bool CarriesSystem(const std::string& disk) const { return systemDisks_.contains(disk); }
  // The stacks of "/" and of the swap areas.
  const std::vector<Stack>& RootAndSwap() const { return rootAndSwap_; }

 private:
  struct FileSystem {
    Stack stack;
    Health btrfs = Health::Normal;
  };
  // A device number or, where that is anonymous, the mount's source.
  using Key = std::pair<dev_t, std::string_view>;
  FileSystem& Of(const Mount& mount);
  void FindSystemDisks();

  const std::vector<Mount>& mounts_;
  std::vector<std::string_view> esataPorts_;
  std::map<Key, FileSystem> fileSystems_;
  std::map<std::string, DiskFacts> facts_;
  std::set<std::string> systemDisks_;
  std::vector<Stack> rootAndSwap_;
};

}  // namespace linux_platform
