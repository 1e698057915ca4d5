#include "common/text.h"
#include "platform/linux/parts/parts.h"
#include "platform/linux/ups/ups_status.h"

namespace linux_platform {
namespace {

source_status::PartState Judge(UpsState state) {
  using source_status::PartState;
  switch (state) {
    case UpsState::OnMains:
      return PartState::Well;
    case UpsState::OnBattery:
    case UpsState::BatteryLow:
      return PartState::Attention;
    case UpsState::Unknown:
      break;
  }
  return PartState::Unknown;
}

}  // namespace

void TellUpsParts(const std::vector<HeardUps>& upses, const TakePart& take) {
  for (const HeardUps& ups : upses) {
    VELAPart part;
    part.kind = source_status::PartKind::Ups;
    part.state = Judge(JudgeUpsWords(ups.words));
    common::FillField(part.name, ups.name);
    common::FillField(part.model, ups.model);
    common::FillField(part.serial, ups.serial);
    if (ups.charge) {
      part.reading = *ups.charge;
      part.mark = ups.lowCharge;
      common::FillField(part.unit, "%");
    }
    part.runtime = ups.runtime.value_or(-1);
    take(part);
  }
}

}  // namespace linux_platform
