#include "platform/linux/contract/expansion_units.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

#include "common/json_reader.h"
#include "common/text.h"
#include "platform/linux/base/log_once.h"
#include "platform/linux/base/settings.h"
#include "platform/linux/base/snapshot.h"
#include "platform/linux/contract/error.h"
#include "platform/status/source_status.h"
#include "velac.h"

namespace linux_platform {
namespace {

using common::FindMember, common::TextMember;

constexpr auto kFresh = std::chrono::milliseconds(500);
constexpr std::string_view kSeparators = ", \t;";

bool Names(std::string_view list, std::string_view id) {
  while (!list.empty()) {
    const std::size_t end = std::min(list.find_first_of(kSeparators), list.size());
    std::string_view word = list.substr(0, end);
    if (word.starts_with("0x")) word.remove_prefix(2);
    if (word == id) return true;
    list.remove_prefix(std::min(end + 1, list.size()));
  }
  return false;
}

bool HasFailed(const Json::Value& part) { return TextMember(part, "state") == "failed"; }

// The elements of a list; an empty one for anything else.
const Json::Value& ListMember(const Json::Value& value, const char* name) {
  static const Json::Value kNone(Json::arrayValue);
  const Json::Value* member = FindMember(value, name);
  return member != nullptr && member->isArray() ? *member : kNone;
}

ExpansionUnit UnitOf(const Json::Value& enclosure) {
  ExpansionUnit unit;
  unit.id = TextMember(enclosure, "id");
  unit.product = TextMember(enclosure, "product");
  unit.unread = TextMember(enclosure, "unread");
  if (!unit.unread.empty()) return unit;
  const Json::Value& fans = ListMember(enclosure, "fans");
  unit.fanFailed = std::ranges::any_of(fans, HasFailed);
  const Json::Value& supplies = ListMember(enclosure, "supplies");
  unit.hasSupplies = !supplies.empty();
  unit.firstSupplyFailed = unit.hasSupplies && HasFailed(*supplies.begin());
  unit.otherSupplyFailed =
      unit.hasSupplies && std::any_of(++supplies.begin(), supplies.end(), HasFailed);
  return unit;
}

// The units as they are now. Not Read: there are none, or they cannot be known.
struct Look {
  std::chrono::steady_clock::time_point taken;
  SnapshotState state = SnapshotState::Absent;
  std::vector<ExpansionUnit> units;
  std::string trouble;
};

// A request asks for the fans, then for the units: its thread looks once.
thread_local Look look;

const Look& ReadUnits() {
  if (std::chrono::steady_clock::now() - look.taken <= kFresh) return look;
  look = {};
  Json::Value snapshot;
  look.state = ReadSnapshot("ses", snapshot, look.trouble);
  if (look.state == SnapshotState::Read) {
    std::string text, reason;
    ReadSettings(kCurrentSettings, text, reason);
    const Settings settings(std::move(text));
    const char* internal = settings.Value("ebox.internal");
    look.units = UnitsOf(snapshot, internal != nullptr ? internal : "");
    look.trouble = TextMember(snapshot, "trouble");
  }
  look.taken = std::chrono::steady_clock::now();
  return look;
}

}  // namespace

std::vector<ExpansionUnit> UnitsOf(const Json::Value& snapshot, std::string_view internal) {
  std::vector<ExpansionUnit> units;
  for (const Json::Value& enclosure : ListMember(snapshot, "enclosures")) {
    if (!enclosure.isObject()) continue;
    ExpansionUnit unit = UnitOf(enclosure);
    if (!Names(internal, unit.id)) units.push_back(std::move(unit));
  }
  return units;
}

unsigned FailedUnitFans() {
  const auto& units = ReadUnits().units;
  unsigned mask = 0;
  for (std::size_t slot = 0; slot < std::min(units.size(), kWatchedUnits); ++slot)
    if (units[slot].fanFailed) mask |= 1U << slot;
  return mask;
}

void ForgetUnits() { look = {}; }

}  // namespace linux_platform

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

constinit FailureLog failures("expansion units");

// Why the units are not known in full; "" when they are.
std::string Missing(const std::vector<ExpansionUnit>& units, const std::string& trouble) {
  const auto silent =
      std::ranges::find_if(units, [](const ExpansionUnit& unit) { return !unit.unread.empty(); });
  if (silent != units.end())
    return "enclosure " + silent->product + " " + silent->id + ": " + silent->unread;
  if (trouble.empty() && units.size() > kWatchedUnits)
    return std::to_string(units.size()) + " units; the fans of only the first " +
           std::to_string(kWatchedUnits) + " are watched";
  return trouble;
}

void Say(const std::vector<ExpansionUnit>& units, const std::string& missing, SourceScope& scope) {
  if (missing.empty())
    failures.Fine();
  else
    failures.Failed(scope, missing);
  if (missing.empty() && units.empty()) scope.Absent("no enclosure is an expansion unit");
}

}  // namespace

int VELAEBoxInfoEnum(VELA_EBOX_INFO** list) {
  SourceScope scope(Source::ExpansionUnits);
  if (list == nullptr) return SetError(Error::BadArgument), -1;
  *list = nullptr;
  const auto& [taken, state, units, trouble] = ReadUnits();
  if (state == SnapshotState::Absent)
    return failures.Fine(), scope.Absent("no enclosure with SES"), 0;
  // Not -1: the caller would log that on every request for as long as it lasts.
  if (state == SnapshotState::Failed) return failures.Failed(scope, trouble), 0;
  Say(units, Missing(units, trouble), scope);

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
