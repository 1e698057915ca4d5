// The status of the sources. By contract a source that fails looks healthy to the module; here
// a platform reports what it really met: which sources it read, which are absent, which nobody
// watches or failed, why, and what to do about it. Per thread, since the last reset.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "common/sources.h"

namespace source_status {

enum class State : std::int32_t {
  NotAsked = -1,
  Absent = 0,  // nothing on this machine is of its kind, and nothing says that there should be
  Read = 1,
  Failed = 2,     // asked, and no answer
  Unwatched = 3,  // there, or configured, and whoever must watch it does not
  Accepted = 4,   // unwatched, and the owner's settings say that he does not want it watched
};

struct StateName {
  State state;
  const char* name;
};
inline constexpr auto kStateNames = std::to_array<StateName>({
    {State::NotAsked, "not asked"},
    {State::Absent, "absent"},
    {State::Read, "read"},
    {State::Failed, "failed"},
    {State::Unwatched, "unwatched"},
    {State::Accepted, "accepted"},
});

constexpr const char* NameState(State state) {
  const int index = static_cast<int>(state) - static_cast<int>(State::NotAsked);
  return kStateNames[static_cast<std::size_t>(index)].name;
}

// Begins the reason that goes on "SERIAL (Health), SERIAL (SelfTest)". No part has these serial
// numbers: only by these words does a capture find them.
inline constexpr std::string_view kStrayDisks =
    "smartd has warned of disks that this machine does not have: ";

}  // namespace source_status

// --- The border to the host, found with dlsym. A platform may lack it.

struct VELASourceReason {
  char text[240] = {};    // why it is in this state; when read, by whom else, mostly none
  char remedy[160] = {};  // what to do: a command where there is one; may be empty
};

constexpr int kVELASourceReasons = 3;

struct VELASourceReport {
  const char* name = "";  // static text: "UPS"
  source_status::State state = source_status::State::NotAsked;
  std::uint32_t microseconds = 0;  // spent in this source since the reset
  std::uint32_t reasonCount = 0;   // so many of the reasons are filled
  std::uint32_t moreReasons = 0;   // 1: there were others, which had no place
  VELASourceReason reasons[kVELASourceReasons] = {};
};
static_assert(sizeof(VELASourceReport) == 24 + 3 * 400);

extern "C" {
// Forgets what this thread's sources reported, what is accepted, and the notes.
__attribute__((visibility("default"))) void VELAPlatformSourcesReset(void);
// Copies up to `capacity` reports, in a fixed order, and returns how many sources there are.
__attribute__((visibility("default"))) int VELAPlatformSources(VELASourceReport* reports,
                                                               int capacity);
}

// --- The platforms' side. Nothing here allocates or throws.

namespace source_status {

using common::Source;
constexpr int kSourceCount = static_cast<int>(common::kSourceNames.size());

// Within one request the worst counts: failed, unwatched, accepted, read, absent. A worse state
// drops the reasons of a better one. Of the same state the first words stay, for later ones
// usually follow from them; but each different reason for being unwatched, and each remark with a
// remedy, is told as far as there is room. `remedy` is the command, or the words, that lead out; ""
// where there is none.
void Say(Source source, State state, const char* remedy, const char* format, ...)
    __attribute__((format(printf, 4, 5)));
void SayRead(Source source);  // and nothing else about it

// From here to the reset, and for what was said before, too: where this source is unwatched, that
// is as its owner wants it. A source that failed is never accepted.
void Accept(Source source);
bool IsAccepted(Source source);

// Adds its own lifetime to the source's time and reports that it was read, unless
// something else is reported.
class SourceScope {
 public:
  explicit SourceScope(Source source);
  ~SourceScope();
  SourceScope(const SourceScope&) = delete;
  SourceScope& operator=(const SourceScope&) = delete;

  Source GetSource() const { return source_; }

  // Read, but by somebody else, or a while ago.
  void Read(const char* format, ...) __attribute__((format(printf, 2, 3)));
  // Read, and there is something to mend in it that changes no answer.
  void ReadWithRemark(const char* remedy, const char* format, ...)
      __attribute__((format(printf, 3, 4)));
  void Absent(const char* format, ...) __attribute__((format(printf, 2, 3)));
  void Unwatched(const char* remedy, const char* format, ...) __attribute__((format(printf, 3, 4)));
  void Failed(const char* remedy, const char* format, ...) __attribute__((format(printf, 3, 4)));

 private:
  Source source_;
  bool said_ = false;
  std::chrono::steady_clock::time_point start_;
};

}  // namespace source_status
