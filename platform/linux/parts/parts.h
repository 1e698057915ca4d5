// Who the names in an answer stand for, a function a room. None opens a device, sleeps or waits for
// another process.
#pragma once

#include <functional>

#include "platform/linux/base/settings.h"
#include "platform/linux/chassis/chassis.h"
#include "platform/linux/chassis/expansion_units.h"
#include "platform/linux/network/netlink.h"
#include "platform/linux/services/pacemaker.h"
#include "platform/linux/storage/storage_view.h"
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
void TellUnitParts(const ExpansionUnits& units, const TakePart& take);
void TellNodeParts(const ClusterServices& services, const TakePart& take);
void TellInterfaceParts(const std::vector<Interface>& interfaces, const TakePart& take);

}  // namespace linux_platform
