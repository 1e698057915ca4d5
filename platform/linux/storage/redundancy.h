// The machine's arrays and mappings, and how well each is.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "platform/linux/base/trouble.h"
#include "platform/linux/storage/block.h"
#include "platform/linux/storage/expected_arrays.h"
#include "platform/linux/storage/expected_snapshot.h"
#include "platform/linux/storage/mapping_snapshot.h"
#include "platform/linux/storage/md.h"
#include "platform/linux/storage/mounts.h"

namespace linux_platform {

class Settings;

struct Redundancy {
  std::vector<MdArray> arrays;
  std::map<std::string, Health> health;  // of arrays and mappings, by kernel name
  Health worst = Health::Normal;
  std::vector<Trouble> failures;                // what the collector could not say of them
  std::vector<Mapping> mappings;                // as the collector last saw them
  std::vector<ExpectedArray> missing;           // of mdadm.conf, and not there
  std::vector<ExpectedSnapshot::Group> groups;  // of LVM, those that miss a disk

  std::set<std::string> withCopies;  // mappings that can do without a part, or tell otherwise

  bool HasCopies(const Stack& stack) const;
  // The worst of the arrays and mappings that are a layer of the stack.
  Health GetHealth(const Stack& stack) const;
};

// `blockDevices` as from ListBlockDevices. The health of mappings comes
// from the collector: they answer only root, and may block.
Redundancy ReadRedundancy(const std::vector<std::string>& blockDevices, const Fstab& fstab,
                          const Settings& settings);

}  // namespace linux_platform
