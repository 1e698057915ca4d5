// The file systems that hold LUNs' files, each asked once.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/linux/storage/filesystem.h"
#include "platform/linux/storage/mounts.h"

namespace linux_platform {

struct HostVolume {
  std::string path;  // its mount point
  // A network's or a program's file system, or one behind such: it may hang and is not asked.
  bool mayHang = false;
  bool isCrashed = false;
  Capacity capacity;  // zero when it is not known
  // As df counts: without what is kept back for root.
  std::uint64_t Total() const { return capacity.size - capacity.free + capacity.available; }
  bool IsFull() const { return Total() > 0 && capacity.available <= Total() / 10; }
};

class HostVolumes {
 public:
  explicit HostVolumes(std::vector<Mount> mounts);
  HostVolumes(const HostVolumes&) = delete;
  HostVolumes& operator=(const HostVolumes&) = delete;

  // The one that the absolute `path` lies in; null when none does. Symbolic links are not
  // followed, as that could hang.
  const HostVolume* Of(std::string_view path);
  // All that were asked for, by path.
  const std::map<std::string, HostVolume>& Asked() const { return asked_; }

 private:
  HostVolume Ask(const Mount& mount) const;

  std::vector<Mount> mounts_;
  std::unordered_map<std::string_view, const Mount*> byTarget_;
  std::map<std::string, HostVolume> asked_;
};

}  // namespace linux_platform
