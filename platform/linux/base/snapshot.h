// What the collector last learned from the slow sources, one file a source. A request
// reads these files and never the sources themselves.
#pragma once

#include <cstdint>
#include <ctime>
#include <string>
#include <string_view>

#include <json/value.h>

#include "platform/linux/base/trouble.h"

namespace linux_platform {

constexpr const char* kSnapshotFolder = "/run/vela-platform";
constexpr std::size_t kSnapshotCap = std::size_t{1} << 20;
constexpr int kSnapshotPeriods = 3;  // as many periods a snapshot counts for

// The members that every snapshot has, and those that say what could not be read: all of it, or
// a part.
constexpr const char *kWritten = "written", *kBootId = "boot_id", *kPeriod = "period",
                     *kError = "error", *kTrouble = "trouble";

enum class SnapshotState { Read, Absent, Old, Failed };

// The snapshot that `text` makes at the time `now`, in seconds since 1970, of the boot
// `bootId`. Read: `document` is an object. Absent: of another boot. Old: nobody has written
// it for too long. Failed: no JSON object, without its time, from the future, or with a
// member "error". Of the last two `reason` says so in words, which begin with `source`. Throws
// nothing but exhausted memory.
SnapshotState ParseSnapshot(std::string_view source, std::string_view text, std::time_t now,
                            std::string_view bootId, Json::Value& document, std::string& reason);

// The same of the file <source>.json in the snapshots' folder, below the root. Absent
// too when there is no such file; Failed too when it cannot be read or is over 1 MiB.
// One system call when it is absent, else four.
SnapshotState ReadSnapshot(const char* source, Json::Value& document, std::string& reason);

// The same as the struct that the source's header describes, which stays as it was unless Read.
template <typename Snapshot>
SnapshotState ReadSnapshot(Snapshot& snapshot, std::string& reason) {
  Json::Value document;
  const SnapshotState state = ReadSnapshot(Snapshot::kSource, document, reason);
  if (state == SnapshotState::Read) snapshot = Snapshot::FromJson(document);
  return state;
}

// The member when it is a whole number; else 0.
std::int64_t NumberMember(const Json::Value& value, const char* name);
// The member when it is an array; else an empty one.
const Json::Value& ListMember(const Json::Value& value, const char* name);

// What to do where there is no fresh snapshot of what only the collector can know.
constexpr const char* kStartCollector =
    "systemctl enable --now vela-platform-collect.timer; systemctl status vela-platform-collect";

// The trouble with a snapshot in this state, and for that reason; none with one that was Read
// or is Absent, where only the caller knows whether there should be one.
Trouble ToTrouble(SnapshotState state, std::string reason);
// Where the collector is needed, `what` being there, and its snapshot is Absent: "only root may
// ask Pacemaker".
Trouble MissCollector(const std::string& what);

// When the youngest snapshot of this boot was written, whatever it says, in seconds since 1970; -1:
// there is none. Reads them all.
std::int64_t FindSnapshotTime();

// How a snapshot that was read came about, for people: "seen by vela-platform-collect 23 s ago".
std::string SeenByCollector(const Json::Value& document);

// What the collector remembers over restarts, one file <source>.json each.
constexpr const char* kMemoryFolder = "/var/lib/vela-platform";
// Null when there is none, or it cannot be read. One system call where there is none, else four.
Json::Value ReadMemory(const char* source);

// The running boot's identifier, below the root; "" when the kernel does not tell.
std::string BootId();

}  // namespace linux_platform
