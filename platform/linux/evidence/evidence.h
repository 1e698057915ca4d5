// Why something was not well, a function a check. Each looks closer only at what its room already
// judged not to be well; a healthy machine pays nothing. None opens a device.
#pragma once

#include <functional>

#include <json/value.h>

#include "platform/linux/base/settings.h"
#include "platform/linux/chassis/chassis.h"
#include "platform/linux/chassis/expansion_units.h"
#include "platform/linux/services/configuration_fault.h"
#include "platform/linux/services/ha_state.h"
#include "platform/linux/services/web_server.h"
#include "platform/linux/storage/storage_view.h"
#include "platform/linux/ups/nut_client.h"
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
// "expansion units"
void TellUnitEvidence(const ExpansionUnits& units, const TakeEvidence& take);
// "system status"
// `refused`: why its configuration was. Asks systemd since when it is down, within `budget`.
void TellWebServerEvidence(const WebServerState& server, const ConfigurationFault& refused,
                           TimeBudget& budget, const TakeEvidence& take);
// "system status", by the result that the scan left; null: there is none.
void TellScanEvidence(const Json::Value& result, const TakeEvidence& take);
void TellUpsEvidence(const std::vector<HeardUps>& upses, const TakeEvidence& take);  // "UPS"
// "high availability"
void TellClusterEvidence(const std::vector<ClusterCause>& causes, const TakeEvidence& take);

}  // namespace linux_platform
