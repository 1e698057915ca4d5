#include <string>

#include "common/text.h"
#include "platform/linux/base/root.h"
#include "platform/linux/evidence/cause.h"
#include "platform/linux/ups/ups_status.h"

namespace linux_platform {
namespace {

constexpr std::uint16_t kUsualPort = 3493;

// "rack", "rack@localhost:4000", "rack@[::1]:3493".
std::string Address(const HeardUps& ups) {
  if (ups.host == kThisMachine && ups.port == kUsualPort) return ups.name;
  const bool is6 = ups.host.find(':') != ups.host.npos;
  return Concatenate(ups.name, is6 ? "@[" : "@", ups.host, is6 ? "]:" : ":",
                     std::to_string(ups.port));
}

// By how much is known: for how long, how full, or neither.
const char* ChooseKey(const HeardUps& ups, bool low) {
  if (ups.charge && ups.runtime) return low ? "ups_battery_low" : "ups_on_battery";
  if (ups.charge) return low ? "ups_charge_low" : "ups_charge";
  return low ? "ups_low" : "ups_discharges";
}

VELAEvidence Describe(const HeardUps& ups, bool low) {
  VELAEvidence record = MakeEvidence(ChooseKey(ups, low), kUpsCheck, ups.name);
  SetShow(record, WriteCommand("upsc {}", {Address(ups)}));
  record.mark = ups.lowCharge;
  if (ups.charge && ups.runtime) {
    record.figure = *ups.runtime / 60;
    record.other = *ups.charge;
  } else {
    record.figure = ups.charge.value_or(0);
  }
  return record;
}

}  // namespace

// The one that ends first comes first, as the answer goes by the worst.
void TellUpsEvidence(const std::vector<HeardUps>& upses, const TakeEvidence& take) {
  for (const UpsState state : {UpsState::BatteryLow, UpsState::OnBattery})
    for (const HeardUps& ups : upses)
      if (JudgeUpsWords(ups.words) == state) take(Describe(ups, state == UpsState::BatteryLow));
}

}  // namespace linux_platform
