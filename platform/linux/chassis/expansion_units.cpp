#include "platform/linux/chassis/expansion_units.h"

#include <algorithm>
#include <utility>

#include "common/json_reader.h"
#include "platform/linux/base/settings.h"

namespace linux_platform {
namespace {

using common::FindMember, common::TextMember;

bool HasFailed(const Json::Value& part) { return TextMember(part, "state") == "failed"; }

// The elements of a list; an empty one for anything else.
const Json::Value& ListMember(const Json::Value& value, const char* name) {
  static const Json::Value kNone(Json::arrayValue);
  const Json::Value* member = FindMember(value, name);
  return member != nullptr && member->isArray() ? *member : kNone;
}

ExpansionUnit ReadUnit(const Json::Value& enclosure) {
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

bool IsInternal(const std::string& id, const std::vector<std::string_view>& internal) {
  return std::ranges::any_of(internal, [&id](std::string_view word) {
    return word == id || (word.starts_with("0x") && word.substr(2) == id);
  });
}

}  // namespace

std::vector<ExpansionUnit> ParseExpansionUnits(const Json::Value& snapshot,
                                               const std::vector<std::string_view>& internal) {
  std::vector<ExpansionUnit> units;
  for (const Json::Value& enclosure : ListMember(snapshot, "enclosures")) {
    if (!enclosure.isObject()) continue;
    ExpansionUnit unit = ReadUnit(enclosure);
    if (!IsInternal(unit.id, internal)) units.push_back(std::move(unit));
  }
  return units;
}

ExpansionUnits ReadExpansionUnits(const Settings& settings) {
  ExpansionUnits read;
  Json::Value snapshot;
  read.state = ReadSnapshot("ses", snapshot, read.trouble);
  if (read.state != SnapshotState::Read) return read;
  read.units = ParseExpansionUnits(snapshot, settings.List("ebox.internal"));
  read.trouble = TextMember(snapshot, "trouble");
  return read;
}

unsigned FailedUnitFans(const std::vector<ExpansionUnit>& units) {
  unsigned mask = 0;
  for (std::size_t slot = 0; slot < std::min(units.size(), kWatchedUnits); ++slot)
    if (units[slot].fanFailed) mask |= 1U << slot;
  return mask;
}

}  // namespace linux_platform
