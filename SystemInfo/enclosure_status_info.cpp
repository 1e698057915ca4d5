#include "SystemInfo/enclosure_status_info.h"

namespace VELA::SystemHealth {

void EnclosureStatusInfo::Init() { LoadEnclosuresStatusInfo(); }

void EnclosureStatusInfo::LoadEnclosuresStatusInfo() {}  // there is nobody to ask

}  // namespace VELA::SystemHealth
