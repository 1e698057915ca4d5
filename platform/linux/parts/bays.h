// Where a person finds a disk: the bays of this machine, and the slots of its expansion units.
#pragma once

#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/parts/parts.h"
#include "platform/linux/storage/disk_identity.h"

namespace linux_platform {

class Bays {
 public:
  explicit Bays(const StorageSources& sources);

  // Fills in bay, slot and port of a disk.
  void Place(const DiskIdentity& disk, VELAPart& part) const;
  // The places that stay empty beside those parts of disks.
  void TellEmpty(const std::vector<VELAPart>& disks, const TakePart& take) const;

 private:
  struct Enclosure {
    std::string name;  // in /sys/class/enclosure
    std::string id;
    std::string unit;  // "JBOD-24-1"; empty: it is not known to be an expansion unit
  };
  void Place(const EnclosureSlot& slot, VELAPart& part) const;

  std::vector<std::string_view> ports_;  // of the setting "bays", the first bay's first
  std::vector<Enclosure> enclosures_;
  std::size_t own_ = 0;        // so many enclosures are not known to be expansion units
  std::int64_t maxDisks_ = 0;  // that the model takes; 0: nobody says
};

}  // namespace linux_platform
