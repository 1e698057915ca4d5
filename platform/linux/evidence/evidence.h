// Why something was not well, a function a check. Each looks closer only at what its room already
// judged not to be well; a healthy machine pays nothing. None opens a device.
#pragma once

#include <functional>

#include "platform/linux/base/settings.h"
#include "platform/linux/chassis/chassis.h"
#include "platform/linux/chassis/expansion_units.h"
#include "platform/linux/services/pacemaker.h"
#include "platform/linux/services/web_server.h"
#include "platform/linux/storage/storage_view.h"
#include "platform/status/evidence.h"

namespace linux_platform {

using TakeEvidence = std::function<void(const VELAEvidence&)>;

// "volume usage" and "external volumes", by the settings' own marks.
void TellVolumeEvidence(const StorageView& view, const Settings& settings,
                        const TakeEvidence& take);
void TellExternalEvidence(const StorageView& view, const Settings& settings,
                          const TakeEvidence& take);
void TellDiskEvidence(const StorageView& view, const TakeEvidence& take);  // "disks"
// "storage overview", and what has crashed for "system status".
void TellStorageEvidence(const StorageView& view, const TakeEvidence& take);
void TellChassisEvidence(const Chassis& chassis, const TakeEvidence& take);  // "system status"
void TellUnitEvidence(const ExpansionUnits& units, const TakeEvidence& take);
// "system status"
void TellWebServerEvidence(const WebServerState& server, const TakeEvidence& take);
void TellClusterEvidence(const ClusterServices& services, const TakeEvidence& take);

}  // namespace linux_platform
