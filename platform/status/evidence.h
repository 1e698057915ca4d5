// Evidence: why something was not well, one record a cause, with the part, the figures and the
// commands. Told beside the answer, and gathered only when somebody asks; never by "get".
#pragma once

#include <cstdint>
#include <string_view>

#include "platform/status/parts.h"

// --- The border to the host, found with dlsym. A platform may lack it.

// A part that has to do with the cause.
struct VELARelatedPart {
  char relation[16] = {};  // names its text: "missing", "failed", "rebuilding"
  char part[96] = {};      // the name of a VELAPart, or words: "bay 3"
  bool operator==(const VELARelatedPart&) const = default;
};

constexpr int kVELARelatedParts = 24;  // beyond, they are counted
constexpr int kVELAMendCommands = 3;

// All texts end in a NUL and are empty where there is nothing to say.
struct VELAEvidence {
  char key[32] = {};        // names its text: "array_degraded"
  char check[32] = {};      // the check that it speaks for, by its name: "storage overview"
  char part[96] = {};       // the name of a VELAPart, or of what is none: "nginx"
  char words[160] = {};     // what the system itself said: "unknown directive"
  char path[160] = {};      // the file that it is about: "/etc/nginx/sites-enabled/a"
  std::int64_t figure = 0;  // what was read; it decides on the plural form of the text
  std::int64_t mark = 0;    // what it was held against; 0: nothing
  std::int64_t other = 0;   // a second figure, where the text has one
  std::int64_t since = 0;   // seconds since 1970; 0: the system does not know
  char show[160] = {};      // the command that shows it
  char mend[kVELAMendCommands][160] = {};  // those that mend it, in their order
  VELARelatedPart related[kVELARelatedParts] = {};
  std::uint32_t relatedCount = 0;  // so many of them are filled
  std::uint32_t moreRelated = 0;   // so many more had no place
  bool operator==(const VELAEvidence&) const = default;
};
static_assert(sizeof(VELAEvidence) ==
              32 + 32 + 96 + 160 + 160 + 4 * 8 + 160 + 3 * 160 + 24 * 112 + 8);

extern "C" {
// As VELATakePart.
using VELATakeEvidence = void (*)(void* taker, const VELAEvidence* evidence);
// Looks for why this thread's request was not answered well, now, and hands over one record a
// cause, the most telling of each check first. A machine that is well has none.
__attribute__((visibility("default"))) void VELAPlatformEvidence(VELATakeEvidence take,
                                                                 void* taker);
}

// --- The platforms' side. Nothing here allocates or throws.

namespace source_status {

// Beyond the room it is counted.
void AddRelated(VELAEvidence& evidence, std::string_view relation, std::string_view part);

}  // namespace source_status
