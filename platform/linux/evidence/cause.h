// What the causes of findings share, and those of the storage in particular.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/evidence/evidence.h"
#include "platform/linux/parts/storage_parts.h"

namespace linux_platform {

// The checks, as they are called.
constexpr const char *kVolumeUsage = "volume usage", *kExternalVolumes = "external volumes",
                     *kDisksCheck = "disks", *kOverview = "storage overview",
                     *kSystemStatus = "system status", *kUpsCheck = "UPS",
                     *kExpansionUnits = "expansion units", *kHighAvailability = "high availability";

// One cause, and how bad it is: the worst is told first.
struct Cause {
  Health health = Health::Normal;
  VELAEvidence record;
};
using Causes = std::vector<Cause>;

VELAEvidence MakeEvidence(const char* key, const char* check, std::string_view part);

// The command `form`, with a name in the place of each "{}", quoted where the shell would take it
// apart. "" when it cannot be shown as it has to be typed: a name holds what no terminal shows, or
// the whole has no room in a record.
std::string WriteCommand(std::string_view form, std::initializer_list<std::string_view> names);

// The command that shows it; those that mend it, all of them or none.
void SetShow(VELAEvidence& record, const std::string& command);
void SetMend(VELAEvidence& record, const std::vector<std::string>& commands);

// What another program said, without the period at its end: the sentence around it has its own.
std::string_view CutPeriod(std::string_view message);

// The name of the disk that the device is or lies on: "Disk 2"; else the kernel's, "sdc".
std::string NameDisk(const StorageView& view, const std::string& device);

// The causes of "storage overview", a function a kind.
void AddArrays(const StorageView& view, Causes& causes);
void AddMappings(const StorageView& view, Causes& causes);
void AddFileSystems(const StorageView& view, Causes& causes);
void AddBtrfs(const StorageView& view, Causes& causes);
void AddPools(const StorageView& view, Causes& causes);
void AddMissing(const StorageView& view, Causes& causes);
void AddDisks(const StorageView& view, Causes& causes);

// Why the file system of the volume has stopped, or which errors it has met.
VELAEvidence DescribeFileSystem(const StorageView& view, const InternalVolume& volume,
                                const char* check);

}  // namespace linux_platform
