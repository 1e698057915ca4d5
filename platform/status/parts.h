// Parts: who the names in an answer stand for, and where a person finds them. Told beside the
// answer, and gathered only when somebody asks; never by "get".
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace source_status {

enum class PartKind : std::int32_t {
  Disk,
  Volume,
  Array,
  Mapping,
  Lun,
  Fan,
  Supply,
  Sensor,
  Unit,
  Ups,
  Node,
  Interface,
};
// People write these names in scenarios, and programs read them: they stay.
inline constexpr std::array kPartKindNames = {
    "disk",   "volume", "array", "mapping", "LUN",  "fan",
    "supply", "sensor", "unit",  "UPS",     "node", "interface",
};
static_assert(kPartKindNames.size() == static_cast<std::size_t>(PartKind::Interface) + 1);

enum class PartState : std::int32_t {
  Unknown,  // nobody looked, or nobody can see it
  Well,
  Attention,  // works, and something is to be done about it: full, worn, rebuilding
  Failed,
  Missing,  // it was here, or is expected here
  Empty,    // a place that may stay empty: a bay
};
inline constexpr std::array kPartStateNames = {
    "unknown", "well", "attention", "failed", "missing", "empty",
};
static_assert(kPartStateNames.size() == static_cast<std::size_t>(PartState::Empty) + 1);

}  // namespace source_status

// --- The border to the host, found with dlsym. A platform may lack it.

// All texts end in a NUL and are empty where nothing is known.
struct VELAPart {
  source_status::PartKind kind = source_status::PartKind::Disk;
  source_status::PartState state = source_status::PartState::Unknown;
  char name[96] = {};         // as the document and its findings call it: "Disk 2", "volume_1"
  char device[64] = {};       // as kernel or daemon call it: "sdb", "md0", "coretemp"
  char path[160] = {};        // "/dev/sdb"
  char parent[96] = {};       // the name of the part that it is in: a disk's array, its volume
  char bay[16] = {};          // of this machine: "3"
  char slot[64] = {};         // of an enclosure: "shelf 1, 4"
  char port[64] = {};         // "ata3", "usb 1-2.3"
  char mountPoint[192] = {};  // "/volume1"
  char model[64] = {};        // "WDC WD40EFRX"; of an array its level, "RAID 5"
  char serial[64] = {};
  std::uint64_t size = 0;     // bytes; 0: unknown, like the next two
  std::uint64_t used = 0;     // bytes of a volume
  std::uint64_t total = 0;    // bytes of a volume
  std::int64_t reading = 0;   // of a sensor, fan or UPS, in `unit`
  std::int64_t mark = 0;      // what the reading is held against; 0: nothing
  char unit[8] = {};          // "C", "rpm", "%", "mV"; empty: it has no reading
  std::int64_t runtime = -1;  // seconds that a UPS's battery lasts; -1: unknown
  bool operator==(const VELAPart&) const = default;
};
static_assert(sizeof(VELAPart) ==
              8 + 96 + 64 + 160 + 96 + 16 + 64 + 64 + 192 + 64 + 64 + 5 * 8 + 8 + 8);

extern "C" {
// Receives one part; it copies what it keeps. It may throw std::bad_alloc, which passes through.
using VELATakePart = void (*)(void* taker, const VELAPart* part);
// Looks at this machine's parts now, and hands them over one by one, however many there are. The
// machine is that of this thread's request. No sleeping disk is opened for it.
__attribute__((visibility("default"))) void VELAPlatformParts(VELATakePart take, void* taker);
}
