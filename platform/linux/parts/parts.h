// Who the names in an answer stand for, a function a room. None opens a device, sleeps or waits for
// another process: who calls them has asked the UPSes' server before.
#pragma once

#include <functional>

#include "platform/linux/base/settings.h"
#include "platform/linux/chassis/chassis.h"
#include "platform/linux/chassis/expansion_units.h"
#include "platform/linux/network/netlink.h"
#include "platform/linux/services/ha_state.h"
#include "platform/linux/storage/storage_view.h"
#include "platform/linux/ups/nut_client.h"
#include "platform/status/parts.h"

namespace linux_platform {

using TakePart = std::function<void(const VELAPart&)>;

struct StorageSources {
  const StorageView& view;
  const ExpansionUnits& units;
  const Settings& current;
  const Settings& factory;
};
// Disks with their bays, arrays, mappings, volumes, external volumes and LUNs.
void TellStorageParts(const StorageSources& sources, const TakePart& take);
// Fans, supplies and temperatures.
void TellChassisParts(const Chassis& chassis, const TakePart& take);
// The units, each with its fans and supplies behind it.
void TellUnitParts(const ExpansionUnits& units, const TakePart& take);
void TellNodeParts(const ClusterReport& cluster, const TakePart& take);
void TellUpsParts(const std::vector<HeardUps>& upses, const TakePart& take);
void TellInterfaceParts(const std::vector<Interface>& interfaces, const TakePart& take);

// Where the kernel has an enclosure: "6:0:8:0", "/dev/sg3". Empty where it does not know it.
struct EnclosurePlace {
  std::string device, path;
};
EnclosurePlace FindEnclosure(const std::string& id);

}  // namespace linux_platform
