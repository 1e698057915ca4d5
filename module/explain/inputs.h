// What each checker looks at, as JSON for people: only what it reads, by its own name.
#pragma once

#include <optional>
#include <string>

#include <json/value.h>

namespace VELA::SystemHealth {
class SystemInfoHandler;
}

namespace VELA::SystemHealth::Explain {

Json::Value VolumeUsageInputs(const SystemInfoHandler& info);
Json::Value ExternalVolumeInputs(const SystemInfoHandler& info);
Json::Value DiskStatusInputs(const SystemInfoHandler& info);
Json::Value StorageOverviewInputs(const SystemInfoHandler& info);
Json::Value UpsInputs(const SystemInfoHandler& info);
Json::Value EnclosureInputs(const SystemInfoHandler& info);
Json::Value SystemStatusInputs(const SystemInfoHandler& info);
Json::Value ExpansionUnitInputs(const SystemInfoHandler& info);
Json::Value ClusterInputs(const std::optional<std::string>& status);
Json::Value SanInputs(const SystemInfoHandler& info);

}  // namespace VELA::SystemHealth::Explain
