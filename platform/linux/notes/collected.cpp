// What only root may read: the collector has read it.
#include "platform/linux/base/root.h"
#include "platform/linux/base/snapshot.h"
#include "platform/linux/notes/notes.h"
#include "platform/linux/notes/tell.h"
#include "platform/linux/storage/mapping_snapshot.h"
#include "platform/linux/storage/md_snapshot.h"
#include "platform/linux/storage/seen_storage.h"

namespace linux_platform {
namespace {

// As it was last seen, which is nothing where it was not.
template <typename Snapshot>
Snapshot ReadSeen() {
  Snapshot snapshot;
  std::string reason;
  ReadSnapshot(snapshot, reason);
  return snapshot;
}

// Two months between first Sundays are nine weeks, and a check may take days.
constexpr std::int64_t kTwoPeriods = 70;

void TellOldScrubs() {
  for (const auto& [name, scrub] : ReadSeenStorage().scrubs) {
    if (scrub.days < kTwoPeriods) continue;
    const NoteKind& kind = name.starts_with('/') ? kScrubOld : kArrayUnchecked;
    Tell(kind, name, name, scrub.days, kTwoPeriods);
  }
}

}  // namespace

void TellCollectedNotes() {
  for (const auto& [array, notes] : ReadSeen<MdSnapshot>().notes) {
    if (notes.mismatches > 0) Tell(kArrayMismatches, array, array, notes.mismatches);
    for (const std::string& member : notes.badBlocks)
      Tell(kArrayBadBlocks, Concatenate(array, ": ", member), array);
  }
  for (const Mapping& mapping : ReadSeen<MappingSnapshot>().mappings) {
    if (mapping.failed == 0) continue;
    if (mapping.kind == "multipath")
      Tell(kPathsLost, mapping.name, mapping.name, mapping.failed, mapping.of);
    else
      Tell(kSnapshotLost, mapping.name, mapping.name);
  }
  TellOldScrubs();
}

}  // namespace linux_platform
