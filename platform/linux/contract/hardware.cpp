// The chassis, and the fans of the expansion units.
#include <cstring>

#include "platform/linux/base/log_once.h"
#include "platform/linux/contract/error.h"
#include "platform/linux/contract/request.h"
#include "platform/status/source_status.h"
#include "velac.h"

using namespace linux_platform;
using source_status::Source, source_status::SourceScope;

namespace {

constinit LogOnce failures("hardware", "sensors; systemctl status vela-platform-collect");

const Chassis& ReportChassis(Request& request) {
  SourceScope scope(Source::Hardware);
  const Chassis& chassis = request.GetChassis();
  if (chassis.absent)
    scope.Absent("no sensor chips, management controller or second mains adapter");
  failures.Report(scope, chassis.troubles);
  for (const Trouble& remark : chassis.remarks)
    scope.ReadWithRemark(remark.remedy.c_str(), "%s", remark.reason.c_str());
  return chassis;
}

struct Record {
  std::uint8_t fanFailed, processorFanFailed;
  std::uint32_t failedSupplies, failedUnitFans;
};
static_assert(sizeof(Record) <= sizeof(VELA_SYS_STATUS::opaque));

int WithMask(std::uint32_t mask, unsigned* detail) {
  if (detail != nullptr) *detail = mask << 8;
  return mask != 0;
}

}  // namespace

int VELASysStatusGet(VELA_SYS_STATUS* record) {
  if (record == nullptr) return SetError(Error::BadArgument);
  const RequestScope request;
  const Chassis& chassis = ReportChassis(*request);
  const Record content = {chassis.fanFailed, chassis.processorFanFailed, chassis.failedSupplies,
                          MaskFailedUnitFans(request->GetExpansionUnits().units)};
  *record = {};
  std::memcpy(record->opaque, &content, sizeof content);
  return 0;
}

int VELAIsComponentFail(const VELA_SYS_STATUS* record, int component, unsigned* detail) {
  if (record == nullptr) return SetError(Error::BadArgument);
  Record content;
  std::memcpy(&content, record->opaque, sizeof content);
  if (detail != nullptr) *detail = 0;
  switch (component) {
    case 1:
      return content.fanFailed;
    case 4:
      return WithMask(content.failedSupplies, detail);
    case 5:
      return WithMask(content.failedUnitFans, detail);
    case 6:
      return content.processorFanFailed;
    default:
      return SetError(Error::BadArgument);
  }
}

int VELARedundantPowerSupport(void) {
  const RequestScope request;
  return ReportChassis(*request).supplies >= 2;
}

int VELAHWSysTempWarning(int* state) {
  if (state == nullptr) return SetError(Error::BadArgument);
  const RequestScope request;
  const std::optional<bool> tooHot = ReportChassis(*request).tooHot;
  if (!tooHot) return -1;  // no sensor that could tell
  *state = *tooHot ? 1 : 0;
  return 0;
}
