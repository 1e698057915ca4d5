#include "SystemInfo/ebox_status_info.h"

#include <velac.h>

#include "module/base/log.h"
#include "module/base/platform_list.h"

namespace VELA::SystemHealth {
namespace {

constexpr LogPosition kListFailed{"SystemInfo/ebox_status_info", 93};

constexpr int kUnitFans = 5;
constexpr int kPowerUnknown = 0;
constexpr int kPowerUnreadable = 255;

// Bit n is set when the fan of the unit in slot n has failed.
unsigned FailedFans() {
  VELA_SYS_STATUS status = {};
  VELASysStatusGet(&status);
  unsigned detail = 0;
  return VELAIsComponentFail(&status, kUnitFans, &detail) == 1 ? detail >> 8U : 0;
}

void Name(EboxStatusInfo::EboxStatus& unit, VELA_EBOX_INFO& record) {
  const char* name = record.name != nullptr ? record.name(record.context) : nullptr;
  if (name != nullptr) unit.name = std::string(name) + "-" + std::to_string(record.unitNumber);
}

EboxStatusInfo::EboxStatus FromRecord(VELA_EBOX_INFO& record, unsigned failedFans) {
  EboxStatusInfo::EboxStatus unit;
  Name(unit, record);
  unit.fanFail = ((failedFans >> (static_cast<unsigned>(record.slotIndex) % 32U)) & 1U) != 0;
  if (record.power != nullptr) {
    unsigned word = 0;
    const int result = record.power(record.context, &word);
    if (result != kPowerUnknown && result != kPowerUnreadable)
      unit.powerSupplyOk = {(word & 1U) != 0, (word & 2U) != 0};
  }
  Name(unit, record);  // asked on both sides of the power status; the later answer stands
  return unit;
}

}  // namespace

void EboxStatusInfo::Init() { LoadEboxStatus(); }

void EboxStatusInfo::LoadEboxStatus() {
  const unsigned failedFans = FailedFans();
  PlatformList<VELA_EBOX_INFO, VELAEBoxInfoEnumFree> list;
  if (VELAEBoxInfoEnum(&list.Out()) == -1) {
    LogError(kListFailed, "Failed to list eboxs information.");
    return;
  }
  eboxes_.reserve(LengthOf(list.Head()));
  for (VELA_EBOX_INFO* record = list.Head(); record != nullptr; record = record->next)
    eboxes_.push_back(FromRecord(*record, failedFans));
}

}  // namespace VELA::SystemHealth
