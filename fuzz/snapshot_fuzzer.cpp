// Whatever stands in a snapshot's file: an object of this boot, or a reason, or nothing;
// and whatever the object holds, units come of it with bounded names.
#include <cstdlib>

#include "platform/linux/base/snapshot.h"
#include "platform/linux/chassis/expansion_units.h"

using namespace linux_platform;

namespace {

void Require(bool holds) {
  if (!holds) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  Json::Value document;
  std::string reason;
  const SnapshotState state = ParseSnapshot("ses", text, 1'000'000, "b", document, reason);
  Require((state == SnapshotState::Failed) == !reason.empty());
  Require((state == SnapshotState::Read) == document.isObject());
  Require(reason.size() < 240);
  const auto snapshot = EnclosureSnapshot::FromJson(document);
  for (const ExpansionUnit& unit : ListExpansionUnits(snapshot, {"a1", "0xa2"}))
    Require(unit.id != "a1" && unit.id != "a2");
  return 0;
}
