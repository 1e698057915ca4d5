// ZFS pools: what the kernel says of each, and what ZFS's own event daemon has recorded.
#pragma once

#include <string>
#include <vector>

#include "platform/linux/base/trouble.h"
#include "platform/linux/storage/block.h"

namespace linux_platform {

struct Zpool {
  std::string name;
  Health health = Health::Normal;
};

// The pools that are imported, whether anything of them is mounted or not.
std::vector<std::string> ListZpools();

// The pools of ZFS's cache file, which it imports at every start, that are not imported; and
// whether it could not be read.
std::vector<std::string> ListMissingZpools(std::vector<Trouble>& troubles);
// The names in such a file, a packed list in XDR; none of what is no such list.
std::vector<std::string> ParseZpoolCache(const std::string& text);

// From the pool's state in /proc/spl/kstat/zfs; one that is not ONLINE is read again after 10 ms,
// for the state flickers while a pool changes. At least Abnormal while the event daemon's hook
// keeps a record of errors below /var/lib/vela-platform/zfs.
Health ReadZpool(const std::string& pool);

// Where pools are imported: nobody hears of errors that leave one ONLINE unless its event daemon
// runs.
Trouble MissZed();

}  // namespace linux_platform
