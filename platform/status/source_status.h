// The status of the sources. By contract a source that fails looks healthy to the module; here
// a platform reports what it really met: which sources it read, which are absent, which failed
// and why. Per thread, since the last reset.
#pragma once

#include <chrono>
#include <cstdint>

#include "common/sources.h"

// --- The border to the host, found with dlsym. A platform may lack it.

struct VELASourceReport {
  const char* name;            // static text: "UPS"
  std::int32_t state;          // 0 absent (or not asked), 1 read, 2 failed
  std::uint32_t microseconds;  // spent in this source since the reset
  char reason[240];            // why absent or failed; when read, by whom else, mostly empty
};
static_assert(sizeof(VELASourceReport) == 256);

extern "C" {
// Forgets what this thread's sources reported.
__attribute__((visibility("default"))) void VELAPlatformSourcesReset(void);
// Copies up to `capacity` reports, in a fixed order, and returns how many sources there are.
__attribute__((visibility("default"))) int VELAPlatformSources(VELASourceReport* reports,
                                                               int capacity);
}

// --- The platforms' side.

namespace source_status {

using common::Source;
constexpr int kSourceCount = static_cast<int>(common::kSourceNames.size());

// Within one request "failed" outlasts "read", and "read" outlasts "absent". Nothing here
// allocates or throws.
void SayRead(Source source);
void SayAbsent(Source source, const char* format, ...) __attribute__((format(printf, 2, 3)));
void SayFailed(Source source, const char* format, ...) __attribute__((format(printf, 2, 3)));

// Adds its own lifetime to the source's time and reports that it was read, unless
// something else is reported.
class SourceScope {
 public:
  explicit SourceScope(Source source);
  ~SourceScope();
  SourceScope(const SourceScope&) = delete;
  SourceScope& operator=(const SourceScope&) = delete;

  // Read, but by somebody else, or a while ago.
  void Read(const char* format, ...) __attribute__((format(printf, 2, 3)));
  void Absent(const char* format, ...) __attribute__((format(printf, 2, 3)));
  void Failed(const char* format, ...) __attribute__((format(printf, 2, 3)));

 private:
  Source source_;
  bool said_ = false;
  std::chrono::steady_clock::time_point start_;
};

}  // namespace source_status
