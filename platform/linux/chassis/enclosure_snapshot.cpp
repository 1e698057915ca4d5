#include "platform/linux/chassis/enclosure_snapshot.h"

#include <algorithm>
#include <array>

#include "common/json_reader.h"
#include "platform/linux/base/snapshot.h"

namespace linux_platform {
namespace {

using common::TextMember;
using State = EnclosurePart::State;

constexpr std::array<std::string_view, 6> kStates = {"ok",      "failed", "absent",
                                                     "failing", "gone",   "unknown"};
constexpr const char *kEnclosures = "enclosures", *kId = "id", *kProduct = "product",
                     *kUnread = "unread", *kFans = "fans", *kSupplies = "supplies", *kName = "name",
                     *kState = "state", *kReading = "reading";

Json::Value ToJson(const std::vector<EnclosurePart>& parts) {
  Json::Value list(Json::arrayValue);
  for (const EnclosurePart& part : parts) {
    Json::Value& entry = list.append(Json::Value(Json::objectValue));
    entry[kName] = part.name;
    entry[kState] = std::string(kStates[static_cast<std::size_t>(part.state)]);
    if (part.reading != 0) entry[kReading] = part.reading;
  }
  return list;
}

std::vector<EnclosurePart> PartsFromJson(const Json::Value& list) {
  std::vector<EnclosurePart> parts;
  for (const Json::Value& entry : list) {
    const auto found = std::ranges::find(kStates, TextMember(entry, kState));
    const State state =
        found == kStates.end() ? State::Unknown : static_cast<State>(found - kStates.begin());
    parts.push_back(
        {TextMember(entry, kName), state, static_cast<int>(NumberMember(entry, kReading))});
  }
  return parts;
}

}  // namespace

Json::Value Enclosure::ToJson() const {
  Json::Value entry(Json::objectValue);
  entry[kId] = id;
  entry[kProduct] = product;
  if (!unread.empty()) {
    entry[kUnread] = unread;
    return entry;
  }
  entry[kFans] = linux_platform::ToJson(fans);
  entry[kSupplies] = linux_platform::ToJson(supplies);
  return entry;
}

Enclosure Enclosure::FromJson(const Json::Value& entry) {
  Enclosure enclosure;
  enclosure.id = TextMember(entry, kId);
  enclosure.product = TextMember(entry, kProduct);
  enclosure.unread = TextMember(entry, kUnread);
  if (!enclosure.unread.empty()) return enclosure;
  enclosure.fans = PartsFromJson(ListMember(entry, kFans));
  enclosure.supplies = PartsFromJson(ListMember(entry, kSupplies));
  return enclosure;
}

Json::Value EnclosureSnapshot::ToJson() const {
  Json::Value members(Json::objectValue);
  Json::Value& list = members[kEnclosures] = Json::Value(Json::arrayValue);
  for (const Enclosure& enclosure : enclosures) list.append(enclosure.ToJson());
  return members;
}

EnclosureSnapshot EnclosureSnapshot::FromJson(const Json::Value& document) {
  EnclosureSnapshot snapshot;
  for (const Json::Value& entry : ListMember(document, kEnclosures))
    if (entry.isObject()) snapshot.enclosures.push_back(Enclosure::FromJson(entry));
  return snapshot;
}

}  // namespace linux_platform
