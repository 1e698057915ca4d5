// Software RAID arrays, from /sys/block/mdN/md.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/linux/storage/block.h"

namespace linux_platform {

struct MdMember {
  std::string device;   // kernel name of the disk or partition: "sda1"
  std::string state;    // words parted by commas: "in_sync,write_error"
  std::string slot;     // a number, or "none"
  bool present = true;  // false once the device has been pulled

  bool Has(const char* word) const;
  bool IsHotSpare() const;  // waiting, not rebuilding: that one has a slot
};

struct MdArray {
  std::string name;      // "md0"
  std::string level;     // "raid5", "container"
  std::string state;     // "clean", "inactive", ...
  std::string metadata;  // "1.2", "external:imsm"
  std::string policy;    // of consistency, where there is parity: "resync", "journal"
  std::int64_t disks = 0;
  std::int64_t degraded = 0;
  std::vector<MdMember> members;
};

// About twelve attributes, none of which takes the array's reconfiguration lock.
MdArray ReadMdArray(const std::string& name);

// RAID 4, 5 and 6.
bool HasParity(const MdArray& array);

// How many members hold all of their data.
std::int64_t CountInSync(const MdArray& array);
// Fewer members than places, while nothing failed and nothing is being filled: made so on purpose,
// or lost and taken out.
bool HasEmptyPlaces(const MdArray& array);

// Without its write journal an array with parity takes no more writes, while its state and its
// count of lost members look well.
bool LostItsJournal(const MdArray& array);

// Whether the array may be one that is being built for the first time: a RAID 4 or 5 whose
// last member alone is being filled. The replacement of that member looks the same.
bool LooksLikeFirstBuild(const MdArray& array);

// `expected`: it is known that the array ought to run. Containers, arrays being taken apart and
// mirrors with far more places than members are Normal. Resync, check and reshape are no fault
// while no member is missing; a member that failed is one even where a spare has replaced it.
Health JudgeMd(const MdArray& array, bool expected);

}  // namespace linux_platform
