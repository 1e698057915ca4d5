// The records of the expansion units.
#include <algorithm>
#include <memory>
#include <new>
#include <utility>

#include "platform/linux/base/log_once.h"
#include "platform/linux/chassis/plugged_parts.h"
#include "platform/linux/contract/error.h"
#include "platform/linux/contract/request.h"
#include "platform/status/source_status.h"
#include "velac.h"

using namespace linux_platform;
using source_status::Source, source_status::SourceScope;

namespace {

// What a record's functions know about their unit.
struct Context {
  bool powerKnown;
  unsigned workingSupplies;
  char product[17];  // as long as the field that SCSI has for it
};
static_assert(sizeof(Context) <= sizeof VELA_EBOX_INFO::context);
static_assert(offsetof(VELA_EBOX_INFO, context) % alignof(Context) == 0);

const char* Name(void* context) {
  const auto& unit = *std::launder(static_cast<const Context*>(context));
  return unit.product[0] != '\0' ? unit.product : nullptr;
}

int Power(void* context, unsigned* word) {
  const auto& unit = *std::launder(static_cast<const Context*>(context));
  *word = unit.workingSupplies;
  return unit.powerKnown ? 1 : 0;
}

VELA_EBOX_INFO* NewRecord(const ExpansionUnit& unit, std::size_t rank) {
  auto* record = new VELA_EBOX_INFO();
  // A slot beyond the mask has a bit that is never set; beyond its word it would share one.
  record->slotIndex = static_cast<std::int32_t>(std::min<std::size_t>(rank, 31));
  record->unitNumber = static_cast<std::uint32_t>(rank + 1);
  auto* context = new (record->context) Context();
  context->powerKnown = unit.unread.empty() && unit.hasSupplies;
  context->workingSupplies =
      (unit.firstSupplyFailed ? 0U : 1U) | (unit.otherSupplyFailed ? 0U : 2U);
  unit.product.copy(context->product, sizeof context->product - 1);
  record->name = Name;
  record->power = Power;
  return record;
}

constinit LogOnce failures("expansion units", "systemctl status vela-platform-collect");

// Why the units are not known in full.
Trouble DescribeMissing(const std::vector<ExpansionUnit>& units, const Trouble& trouble) {
  const auto silent =
      std::ranges::find_if(units, [](const ExpansionUnit& unit) { return !unit.unread.empty(); });
  if (silent != units.end())
    return "enclosure " + silent->product + " " + silent->id + ": " + silent->unread;
  if (trouble.IsNone() && units.size() > kWatchedUnits)
    return std::to_string(units.size()) + " units; the fans of only the first " +
           std::to_string(kWatchedUnits) + " are watched";
  return trouble;
}

void ReportUnits(const std::vector<ExpansionUnit>& units, const Trouble& missing,
                 SourceScope& scope) {
  failures.Report(scope, missing);
  if (missing.IsNone() && units.empty()) scope.Absent("no enclosure is an expansion unit");
  for (const ExpansionUnit& unit : units) {
    if (!unit.gone.empty())
      scope.ReadWithRemark(kForgetPart, "%s of %s is gone", unit.gone.c_str(),
                           unit.product.c_str());
    if (!unit.failing.empty())
      scope.ReadWithRemark("have a spare part at hand",
                           "%s of %s still works, and predicts its own failure",
                           unit.failing.c_str(), unit.product.c_str());
  }
}

}  // namespace

int VELAEBoxInfoEnum(VELA_EBOX_INFO** list) {
  SourceScope scope(Source::ExpansionUnits);
  if (list == nullptr) return SetError(Error::BadArgument);
  *list = nullptr;
  const RequestScope request;
  const auto& [state, units, trouble] = request->GetExpansionUnits();
  if (state == SnapshotState::Absent) scope.Absent("no enclosure with SES");
  // Not -1 where it Failed: the caller would log that on every request for as long as it lasts.
  if (state == SnapshotState::Read)
    ReportUnits(units, DescribeMissing(units, trouble), scope);
  else
    failures.Report(scope, trouble);

  std::unique_ptr<VELA_EBOX_INFO, void (*)(VELA_EBOX_INFO*)> head(nullptr, VELAEBoxInfoEnumFree);
  for (std::size_t rank = units.size(); rank-- > 0;) {
    VELA_EBOX_INFO* record = NewRecord(units[rank], rank);
    record->next = head.release();
    head.reset(record);
  }
  *list = head.release();
  return 0;
}

void VELAEBoxInfoEnumFree(VELA_EBOX_INFO* list) {
  while (list != nullptr) delete std::exchange(list, list->next);
}
